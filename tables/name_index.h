// NameIndex: from a text to the number of the record that has it.
//
// The texts are compared where they lie in the string store of the table; when that is closed, its
// bytes are handed over, so that the index still answers. Copies of the texts are kept where the
// store has no bytes in memory (direct mode), and once they are to be moved.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "storage/batch.h"
#include "storage/probe_table.h"
#include "storage/site_var_rec_db.h"
#include "util/prefetch.h"

namespace zvrsit {

class NameIndex {
 public:
  // An empty index for about `count` names. `store` is open, and stays so until Keep or CopyNames.
  NameIndex(const SiteVarRecDB& store, int count);

  // The number of a text, compared byte by byte, or -1.
  int Find(std::string_view text) const;
  // Sets the number of a text, also of one that is there. One that is a view into the store is not
  // copied.
  void Put(std::string_view text, int number);
  // Gets the memory that the next Put may need, of a text of that length.
  void MakeRoom(std::size_t length);
  // Fetches what Find and Put of a text with this hash (SiteVarRecDB::HashOf) will read.
  void FetchFor(std::uint32_t hash) const { PrefetchMemory(names_.Home(hash)); }
  // The same as Put for many in less time: names(put) calls put(text, number) for each.
  template <class Names>
  void PutAll(Names names) {
    const auto put = [this](const NewName& name) { Put(name.text, name.number, name.hash); };
    auto batch = MakeBatch<NewName>(put, store_ != nullptr);
    names([this, &batch](std::string_view text, int number) {
      const std::uint32_t hash = SiteVarRecDB::HashOf(text);
      batch.Add(names_.Home(hash), {hash, number, text});
    });
    batch.Finish();
  }
  // Forgets a text; one that is not there is ignored. It needs no memory, nor does Clear.
  void Remove(std::string_view text);
  void Clear() { names_.Clear(); }

  // Copies all names, before the store moves them.
  void CopyNames();
  // Goes on with the bytes of the store, which is closed.
  void Keep(FileImage bytes);

 private:
  struct Name {
    std::uint32_t hash;
    std::int32_t number;
    std::uint32_t offset;  // in what Texts() gives
    std::uint32_t length;
  };

  struct NewName {
    std::uint32_t hash;
    std::int32_t number;
    std::string_view text;
  };

  static constexpr std::size_t kKeptBytes = 4096;

  void Put(std::string_view text, int number, std::uint32_t hash);
  std::string_view Texts() const;
  auto HasText(std::string_view text) const;
  std::uint32_t Place(std::string_view text);
  void Rewrite();
  void GrowTexts(std::size_t length);

  ProbeTable<Name> names_;
  // Where the texts lie: in an open store, or in the bytes of a closed one, or in `texts_`.
  const SiteVarRecDB* store_;
  FileImage closed_;
  std::string texts_;
  std::size_t removed_ = 0;  // bytes of `texts_` that no name refers to
};

}  // namespace zvrsit
