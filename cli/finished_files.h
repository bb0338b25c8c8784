// Files that are written in a folder beside their places, and then take these all at once, also
// when the process is killed or the power fails meanwhile.
//
// When all are written and on the disk, their folder is renamed to `done`, in the folder of their
// places. From this moment they count. Then they are moved one by one. If this process does not
// finish that, the next one that holds the folder does.
//
// All of these throw Failure(kFileSystem).
#pragma once

#include <filesystem>

namespace zvrsit::cli {

// Makes the files in `folder` count, in whose subfolders there may be files too. `places` is on the
// same file system.
void FinishFiles(const std::filesystem::path& folder, const std::filesystem::path& places);

bool HasFinishedFiles(const std::filesystem::path& places);
// Moves finished files to their places, and waits until they are there; nothing if there are none.
// The folder `done` stays until EndFinishedFiles is called: a second time does no harm.
void PutFinishedFiles(const std::filesystem::path& places);
void EndFinishedFiles(const std::filesystem::path& places);

}  // namespace zvrsit::cli
