// ProfileTable: what the tables of site profiles and server profiles share. They open with a
// backup, and rename, copy and delete whole profiles with all their texts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/single_byte.h"
#include "tables/named_table.h"

namespace zvrsit {

// Open modes of a profile table.
inline constexpr int kOpenPlain = 0;    // opens or makes the files
inline constexpr int kOpenBackUp = 1;   // then copies both to their "_bak" files
inline constexpr int kOpenRestore = 2;  // the same; files that cannot be opened are first replaced
                                        // by their "_bak" files, once

template <class Rec>
class ProfileTable : public NamedTable<Rec> {
 public:
  // Opens the table in one of the modes above (any other is taken as 0); 0 or -1.
  [[nodiscard]] int Open(const std::string& path, int mode);

  // Deletes a profile and gives back all its texts; 0 or -1.
  [[nodiscard]] int Delete(int number);
  int Clear() = delete;  // would leave the texts behind

 protected:
  explicit ProfileTable(bool wholeFile) : wholeFile_(wholeFile) {}

  // Whether a profile other than `except` has this name, ASCII letter case ignored. This and all
  // functions below may throw when there is no memory.
  bool IsTaken(std::string_view name, int except);
  // Adds `record` under that name; its number or -1.
  [[nodiscard]] int AddProfile(std::string_view name, Rec& record);
  // Writes `record` back under another name; 0 or -1. All its words but the name are set already.
  [[nodiscard]] int StoreRenamed(Rec& record, std::string_view name);
  // Gives a copied record one reference of its own to each of its texts, except the name.
  void ShareTexts(Rec& record);

 private:
  struct HashButForCase {
    std::size_t operator()(const std::string& name) const;
  };
  struct SameButForCase {
    bool operator()(const std::string& a, const std::string& b) const {
      return platform::EqualButForCase(a, b);
    }
  };
  // Numbers by name. A file that another program has made may hold names that differ in letter case
  // only.
  using Names = std::unordered_multimap<std::string, int, HashButForCase, SameButForCase>;

  [[nodiscard]] int OpenOnce(const std::string& path);
  [[nodiscard]] int Restore(const std::string& path);
  void MakeNames();
  // When there is no memory, the names are dropped, and read again when one is next needed.
  void NoteName(std::string_view name, int number);
  void ForgetName(const std::string& name, int number);

  const bool wholeFile_;
  Names names_;  // of all profiles, once namesMade_
  bool namesMade_ = false;
};

}  // namespace zvrsit
