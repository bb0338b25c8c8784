// Changes of files as ranges of bytes, planned before anything is changed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api.h"

namespace zvrsit {

// One changed part of a file.
struct TextEdit {
  std::int64_t offset = 0;  // in bytes of the file as it is now
  std::int64_t length = 0;
  std::string text;  // what stands there afterwards, in the encoding of the file
  // Where the value begins that the part belongs to, as people count; as of a finding.
  int line = 0;
  int column = 0;
  // The reference or name as written and as it will be, decoded, in the code page: for people.
  std::string before;
  std::string after;
};

// What changes in one file.
struct FileEdits {
  std::string path;             // the `\` path of now, before anything is moved
  std::vector<TextEdit> edits;  // in the order of the file, none touches the next
  // Of the bytes that the edits were planned for. The hash is good in this process only.
  std::int64_t size = 0;
  std::uint64_t hash = 0;
};

// A reference that ought to change and stays as it is.
struct KeptReference {
  std::string path;  // of its file, before anything is moved
  int line = 0;
  int column = 0;
  std::string text;  // as written, decoded, in the code page
  std::string why;   // for people, in English: "holds server code"
};

// What a change of the site asks for in its files. A file comes once, and only if it changes; in
// the order of the paths.
struct RepairPlan {
  std::vector<FileEdits> files;
  std::vector<KeptReference> kept;
};

// Makes the edits in `bytes`, the content of the file. False with `result` as it was, when these
// are not the bytes that the edits were planned for.
ZVRSIT_API bool ApplyEdits(std::string_view bytes, const FileEdits& edits, std::string& result);

}  // namespace zvrsit
