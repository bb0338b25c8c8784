#include <lmdb.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include "bench/rival_stores.h"

namespace zvrsit::bench {
namespace {

constexpr std::size_t kMapBytes = std::size_t{4} << 30;
constexpr unsigned kNumbers = MDB_INTEGERKEY;
constexpr unsigned kNumberLists = MDB_INTEGERKEY | MDB_DUPSORT | MDB_DUPFIXED | MDB_INTEGERDUP;

MDB_val Value(std::string_view bytes) {
  return {bytes.size(), const_cast<char*>(bytes.data())};
}

std::string_view Bytes(const MDB_val& value) {
  return {static_cast<const char*>(value.mv_data), value.mv_size};
}

// The bytes of an integer, as LMDB wants keys that are one.
std::string_view Bytes(const std::uint32_t& number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

// The start of a link's record; the text follows.
struct LinkWords {
  std::int32_t from, to, type, count;
};

LinkWords WordsOf(std::string_view record) {
  LinkWords words;
  std::memcpy(&words, record.data(), sizeof words);
  return words;
}

std::string RecordOf(const Link& link) {
  const LinkWords words = {link.from, link.to, 1, 1};
  return std::string(reinterpret_cast<const char*>(&words), sizeof words) + link.text;
}

class Database {
 public:
  ~Database() { Close(); }

  bool Open(const std::string& folder) {
    folder_ = folder;
    return mdb_env_create(&environment_) == 0 &&
           mdb_env_set_mapsize(environment_, kMapBytes) == 0 &&
           mdb_env_set_maxdbs(environment_, 8) == 0 &&
           mdb_env_open(environment_, folder.c_str(), MDB_NOSYNC, 0644) == 0 && Begin();
  }
  bool Part(const char* name, unsigned flags, MDB_dbi& part) {
    return mdb_dbi_open(transaction_, name, flags | MDB_CREATE, &part) == 0;
  }
  bool Commit() { return mdb_txn_commit(transaction_) == 0 && Begin(); }
  // Writes a copy without free pages and puts it in the file's place, which closes it.
  bool Pack() {
    const std::string copy = folder_ + "/copy";
    if (mkdir(copy.c_str(), 0755) != 0 || mdb_txn_commit(transaction_) != 0) return false;
    transaction_ = nullptr;
    const bool copied = mdb_env_copy2(environment_, copy.c_str(), MDB_CP_COMPACT) == 0;
    return Close() && copied &&
           std::rename((copy + "/data.mdb").c_str(), (folder_ + "/data.mdb").c_str()) == 0 &&
           std::remove(copy.c_str()) == 0;
  }
  bool Close() {
    if (environment_ == nullptr) return true;
    const bool committed = transaction_ == nullptr || mdb_txn_commit(transaction_) == 0;
    mdb_env_close(environment_);
    transaction_ = nullptr;
    environment_ = nullptr;
    return committed;
  }

  bool Put(MDB_dbi part, std::string_view key, std::string_view value, unsigned flags = 0) {
    MDB_val k = Value(key), v = Value(value);
    return mdb_put(transaction_, part, &k, &v, flags) == 0;
  }
  bool Get(MDB_dbi part, std::string_view key, std::string_view& value) {
    MDB_val k = Value(key), v;
    if (mdb_get(transaction_, part, &k, &v) != 0) return false;
    value = Bytes(v);
    return true;
  }
  // `value` names the one to delete of a key with several; empty for all.
  bool Delete(MDB_dbi part, std::string_view key, std::string_view value = {}) {
    MDB_val k = Value(key), v = Value(value);
    return mdb_del(transaction_, part, &k, value.empty() ? nullptr : &v) == 0;
  }
  int Count(MDB_dbi part) {
    MDB_stat stat;
    return mdb_stat(transaction_, part, &stat) == 0 ? static_cast<int>(stat.ms_entries) : -1;
  }
  // Calls visit(number) for each number of a list, until one gives false; false on failure.
  template <class Visit>
  bool ForEachNumber(MDB_dbi lists, std::uint32_t list, Visit visit) {
    MDB_cursor* cursor = nullptr;
    if (mdb_cursor_open(transaction_, lists, &cursor) != 0) return false;
    MDB_val key = Value(Bytes(list)), value;
    for (int got = mdb_cursor_get(cursor, &key, &value, MDB_SET_KEY); got == 0;
         got = mdb_cursor_get(cursor, &key, &value, MDB_NEXT_DUP)) {
      std::uint32_t number;
      std::memcpy(&number, value.mv_data, sizeof number);
      if (!visit(number)) break;
    }
    mdb_cursor_close(cursor);
    return true;
  }

 private:
  bool Begin() { return mdb_txn_begin(environment_, nullptr, 0, &transaction_) == 0; }

  std::string folder_;
  MDB_env* environment_ = nullptr;
  MDB_txn* transaction_ = nullptr;
};

// Names by number, and numbers by name.
class NameParts {
 public:
  explicit NameParts(Database& database) : database_(database) {}

  bool Open() {
    return database_.Part("names", 0, byName_) && database_.Part("entries", kNumbers, records_);
  }
  bool Add(std::uint32_t number, const std::string& name, const std::string& words) {
    return database_.Put(byName_, name, Bytes(number), MDB_NOOVERWRITE) &&
           database_.Put(records_, Bytes(number), words + name, MDB_APPEND);
  }
  // The number of a name, or -1.
  int Find(const std::string& name) {
    std::string_view value;
    std::uint32_t number;
    if (!database_.Get(byName_, name, value)) return -1;
    std::memcpy(&number, value.data(), sizeof number);
    return static_cast<int>(number);
  }
  bool Delete(std::uint32_t number, std::size_t wordBytes) {
    std::string_view value;
    if (!database_.Get(records_, Bytes(number), value)) return false;
    return database_.Delete(byName_, std::string(value.substr(wordBytes))) &&
           database_.Delete(records_, Bytes(number));
  }
  MDB_dbi records() const { return records_; }

 private:
  Database& database_;
  MDB_dbi byName_ = 0;   // name: number
  MDB_dbi records_ = 0;  // number: words, name
};

// Links by number, and the numbers of those that have an end.
class LinkParts {
 public:
  explicit LinkParts(Database& database) : database_(database) {}

  bool Open() {
    return database_.Part("sources", kNumberLists, bySource_) &&
           database_.Part("targets", kNumberLists, byTarget_) &&
           database_.Part("links", kNumbers, records_);
  }
  // Numbers come in ascending order; so do the sources where `flags` is MDB_APPENDDUP.
  bool Add(std::uint32_t number, const Link& link, unsigned flags = 0) {
    const auto from = static_cast<std::uint32_t>(link.from);
    const auto to = static_cast<std::uint32_t>(link.to);
    return database_.Put(records_, Bytes(number), RecordOf(link), MDB_APPEND) &&
           database_.Put(bySource_, Bytes(from), Bytes(number), flags) &&
           database_.Put(byTarget_, Bytes(to), Bytes(number));
  }
  bool Find(std::uint32_t number, const Link& link) {
    bool found = false;
    database_.ForEachNumber(bySource_, static_cast<std::uint32_t>(link.from), [&](auto each) {
      std::string_view record;
      if (!database_.Get(records_, Bytes(each), record)) return false;
      found = WordsOf(record).to == link.to && each == number;
      return !found;
    });
    return found;
  }
  bool Delete(std::uint32_t number) {
    std::string_view record;
    if (!database_.Get(records_, Bytes(number), record)) return false;
    const LinkWords words = WordsOf(record);
    const auto from = static_cast<std::uint32_t>(words.from);
    const auto to = static_cast<std::uint32_t>(words.to);
    return database_.Delete(bySource_, Bytes(from), Bytes(number)) &&
           database_.Delete(byTarget_, Bytes(to), Bytes(number)) &&
           database_.Delete(records_, Bytes(number));
  }
  bool DeleteFrom(int page) {
    std::vector<std::uint32_t> numbers;
    database_.ForEachNumber(bySource_, static_cast<std::uint32_t>(page), [&](auto number) {
      numbers.push_back(number);
      return true;
    });
    for (const std::uint32_t number : numbers) {
      if (!Delete(number)) return false;
    }
    return true;
  }
  int CountFrom(int page) { return CountTexts(bySource_, page); }
  int CountTo(int page) { return CountTexts(byTarget_, page); }
  MDB_dbi records() const { return records_; }

 private:
  int CountTexts(MDB_dbi lists, int page) {
    int count = 0;
    database_.ForEachNumber(lists, static_cast<std::uint32_t>(page), [&](auto number) {
      std::string_view record;
      if (database_.Get(records_, Bytes(number), record) && record.size() > sizeof(LinkWords)) {
        ++count;
      }
      return true;
    });
    return count;
  }

  Database& database_;
  MDB_dbi bySource_ = 0;  // source: numbers
  MDB_dbi byTarget_ = 0;  // target: numbers
  MDB_dbi records_ = 0;   // number: source, target, type, count, text
};

// What both kinds of numbered entries share.
template <class Store, class Parts>
class Entries : public Store {
 public:
  bool Open(const std::string& folder) override { return database_.Open(folder) && parts_.Open(); }
  bool Touch(int number) override {
    const auto key = static_cast<std::uint32_t>(number);
    std::string_view value;
    return database_.Get(parts_.records(), Bytes(key), value) &&
           database_.Put(parts_.records(), Bytes(key), std::string(value));
  }
  int Count() override { return database_.Count(parts_.records()); }
  bool Commit() override { return database_.Commit(); }
  bool Pack() override { return database_.Pack(); }
  bool Close() override { return database_.Close(); }

 protected:
  Database database_;
  Parts parts_{database_};
};

class Names : public Entries<RivalStore, NameParts> {
 public:
  Names(const std::vector<std::string>& names, int recordBytes)
      : names_(names), record_(static_cast<std::size_t>(recordBytes), '\0') {}

  bool Add(int number) override {
    return parts_.Add(static_cast<std::uint32_t>(number), Name(number), record_);
  }
  bool Find(int number) override { return parts_.Find(Name(number)) == number; }
  bool Delete(int number) override {
    return parts_.Delete(static_cast<std::uint32_t>(number), record_.size());
  }

 private:
  const std::string& Name(int number) const { return names_[static_cast<std::size_t>(number)]; }

  const std::vector<std::string>& names_;
  const std::string record_;
};

class Links : public Entries<RivalLinks, LinkParts> {
 public:
  explicit Links(const std::vector<Link>& links) : links_(links) {}

  bool Add(int number) override {
    return parts_.Add(static_cast<std::uint32_t>(number), At(number), MDB_APPENDDUP);
  }
  bool Find(int number) override {
    return parts_.Find(static_cast<std::uint32_t>(number), At(number));
  }
  bool Delete(int number) override { return parts_.Delete(static_cast<std::uint32_t>(number)); }
  int CountFrom(int page) override { return parts_.CountFrom(page); }
  int CountTo(int page) override { return parts_.CountTo(page); }

 private:
  const Link& At(int number) const { return links_[static_cast<std::size_t>(number)]; }

  const std::vector<Link>& links_;
};

class Site : public RivalSite {
 public:
  bool Open(const std::string& folder) override {
    return database_.Open(folder) && nameParts_.Open() && linkParts_.Open();
  }
  int NumberOf(const std::string& name) override {
    const int known = nameParts_.Find(name);
    if (known >= 0) return known;
    return nameParts_.Add(names_, name, {}) ? static_cast<int>(names_++) : -1;
  }
  bool ReplaceLinks(int page, const std::vector<Link>& links) override {
    bool done = linkParts_.DeleteFrom(page);
    for (const Link& link : links) done = done && linkParts_.Add(links_++, link);
    return done;
  }
  int CountFrom(int page) override { return linkParts_.CountFrom(page); }
  bool Commit() override { return database_.Commit(); }

 private:
  Database database_;
  NameParts nameParts_{database_};
  LinkParts linkParts_{database_};
  std::uint32_t names_ = 0;  // numbers given so far
  std::uint32_t links_ = 0;
};

}  // namespace

std::unique_ptr<RivalStore> MakeLmdbNames(const std::vector<std::string>& names, int recordBytes) {
  return std::make_unique<Names>(names, recordBytes);
}
std::unique_ptr<RivalLinks> MakeLmdbLinks(const std::vector<Link>& links) {
  return std::make_unique<Links>(links);
}
std::unique_ptr<RivalSite> MakeLmdbSite() {
  return std::make_unique<Site>();
}

}  // namespace zvrsit::bench
