// NameIndex: from a text to the number of the record that has it.
//
// Texts are compared at their places in the string store of the table, so they need no memory of
// their own. When the store is closed, it gives its bytes to the index, which then still answers.
// In two cases texts are copied: in direct mode, where the store has no bytes in memory, and before
// a Pack moves them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "storage/batch.h"
#include "storage/site_var_rec_db.h"
#include "storage/text_map.h"
#include "util/prefetch.h"

namespace zvrsit {

// Where the names of an index lie: in an open store, in the bytes of a closed one, or in copies.
class NameTexts {
 public:
  // `store` is null when names are copied from the start.
  explicit NameTexts(const SiteVarRecDB* store) : store_(store) {}

  std::string_view view() const;
  bool areCopies() const { return store_ == nullptr && !closed_.isHeld(); }
  // Whether this text lies in `view()` of an open store, so that it need not be copied.
  bool HoldsStored(std::string_view text) const;
  // The place of a text: in the store if it lies there, else in a copy that is made now.
  std::size_t Place(std::string_view text);
  void Clear() { copies_.clear(); }

  // Makes room for one more copy of that length. For many copies this takes linear time.
  void MakeRoom(std::size_t length);
  void TakeCopies(std::string copies);
  void Keep(FileImage bytes);

 private:
  const SiteVarRecDB* store_;
  FileImage closed_;
  std::string copies_;
};

class NameIndex {
 public:
  // An empty index for about `count` names. `store` is open, and stays so until Keep or CopyNames.
  NameIndex(const SiteVarRecDB& store, int count);

  // The number of a text, compared byte by byte, or -1.
  int Find(std::string_view text) const;
  // Sets the number of a text, whether the text is there or not. A text that lies in the store is
  // not copied.
  void Put(std::string_view text, int number);
  // Reserves the memory that the next Put of a text of that length may need.
  void MakeRoom(std::size_t length);
  // Fetches what Find and Put of a text with this hash (SiteVarRecDB::HashOf) will read.
  void FetchFor(std::uint32_t hash) const { PrefetchMemory(names_.Home(hash)); }
  // As Put for many texts, in less time: names(put) calls put(text, number) for each.
  template <class Names>
  void PutAll(Names names) {
    const auto put = [this](const NewName& name) { Put(name.text, name.number, name.hash); };
    auto batch = MakeBatch<NewName>(put, !names_.texts().areCopies());
    names([this, &batch](std::string_view text, int number) {
      const std::uint32_t hash = SiteVarRecDB::HashOf(text);
      batch.Add(names_.Home(hash), {hash, number, text});
    });
    batch.Finish();
  }
  // Forgets a text; one that is not there is ignored. It needs no memory, nor does Clear.
  void Remove(std::string_view text);
  void Clear();

  // Copies all names, before the store moves them.
  void CopyNames();
  // Goes on with the bytes of the store, which is closed.
  void Keep(FileImage bytes) { names_.texts().Keep(std::move(bytes)); }

 private:
  struct NewName {
    std::uint32_t hash;
    std::int32_t number;
    std::string_view text;
  };

  void Put(std::string_view text, int number, std::uint32_t hash);
  void CopyAnew();

  TextMap<std::int32_t, NameTexts> names_;
  std::size_t removed_ = 0;  // bytes of copies that no name refers to
};

}  // namespace zvrsit
