// ProfileTable: what the tables of site profiles and server profiles share: open modes with a
// backup, and whole profiles that are renamed, copied and deleted with all their texts.
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
  int Open(const std::string& path, int mode);

  // Deletes a profile and gives back all its texts; 0 or -1.
  int Delete(int number);
  int Clear() = delete;  // would leave the texts behind

 protected:
  explicit ProfileTable(bool wholeFile) : wholeFile_(wholeFile) {}

  // Whether a profile other than `except` has this name but for the case of ASCII letters. It may
  // throw for want of memory, as all below.
  bool IsTaken(std::string_view name, int except);
  // Adds `record` under that name; its number or -1.
  int AddProfile(std::string_view name, Rec& record);
  // Writes `record`, already changed but for its name word, back under another name; 0 or -1.
  int StoreRenamed(Rec& record, std::string_view name);
  // Makes the texts of a copied record its own: one more reference each, but for the name.
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
  // Numbers by name. A file of another's making may hold several that differ in case only.
  using Names = std::unordered_multimap<std::string, int, HashButForCase, SameButForCase>;

  int OpenOnce(const std::string& path);
  int Restore(const std::string& path);
  void MakeNames();
  // Without memory all names are read anew when one is next asked for.
  void NoteName(std::string_view name, int number);
  void ForgetName(const std::string& name, int number);

  const bool wholeFile_;
  Names names_;  // of all profiles, once namesMade_
  bool namesMade_ = false;
};

}  // namespace zvrsit
