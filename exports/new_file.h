// NewFile: a file that takes the place of another one when it is whole.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace zvrsit {

// A place to write to: its native name, for messages and for those who open it; and its path. On
// Windows the standard library would take a narrow name for UTF-8.
struct OutputPath {
  std::string name;
  std::filesystem::path path;

  OutputPath Below(const std::string& file) const { return {name + "/" + file, path / file}; }
};

// What keeps something from being written: names the file, and the reason.
class ExportError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// It is written beside the other one, under its name with ".new" after it. Everything that fails
// throws ExportError.
class NewFile {
 public:
  // A file that an earlier run has left beside it is removed.
  explicit NewFile(const OutputPath& place);
  // Removes what did not take its place.
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // Of the place that it will take.
  const std::string& name() const { return place_.name; }
  // The native name of the file that is written, for those who open it themselves.
  std::string newName() const { return place_.name + kSuffix; }
  // Writes to it; it is opened when this is first called.
  void Write(std::string_view bytes);
  // Puts it in the place of the other one.
  void Commit();

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  static constexpr const char* kSuffix = ".new";
  [[noreturn]] void Fail(const std::error_code& error) const;

  const OutputPath place_;
  std::filesystem::path new_;
  std::unique_ptr<std::FILE, CloseFile> file_;
  bool isDone_ = false;
};

}  // namespace zvrsit
