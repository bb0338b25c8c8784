// The files of a site's tables, in a native folder.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace zvrsit::cli {

// What the servers of other sites answered. It lies in the folder of a site's tables; for folders
// that are no sites, in that of the database.
inline constexpr const char* kKeptAnswers = "external.sqlite";
// Moves that file to the folder of other tables, or removes it; and then the folder, if it is
// empty. Those who ask the servers again bring it back, so no failure is told.
void MoveKeptAnswers(const std::string& folder, const std::string& to);
void RemoveKeptAnswers(const std::string& folder);
// Another text when a file is another one, by size and time.
std::string StampOf(const std::filesystem::path& file);
// Whether all files of a site that was rebuilt once are in `folder`.
bool HasTables(const std::string& folder);
// The same of all files in `folder` that an update writes.
std::string StampOfTables(const std::string& folder);
// Copies a file over another; a full disk is told as such.
[[nodiscard]] std::error_code CopyOneFile(const std::filesystem::path& from,
                                          const std::filesystem::path& to);
// Each throws Failure(kFileSystem), with the name of the file.
//
// Copies them into another folder, which is there.
void CopyTables(const std::string& folder, const std::string& to);
// Removes them, and makes the folder if it is missing.
void RemoveTables(const std::string& folder);
// Throws when a file may not be read (or, unless `onlyToRead`, not read and written). A missing
// file is no failure.
void NeedAccess(const std::string& file, bool onlyToRead);
void NeedAccessToTables(const std::string& folder, bool onlyToRead);

}  // namespace zvrsit::cli
