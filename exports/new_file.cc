#include "exports/new_file.h"

#include <cerrno>

#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>
#endif

namespace zvrsit {

NewFile::NewFile(const OutputPath& place) : place_(place), new_(place.path) {
  new_ += kSuffix;
  std::error_code error;
  const std::filesystem::file_status there = std::filesystem::status(place.path, error);
  if (std::filesystem::is_directory(there)) {
    Fail(std::make_error_code(std::errc::is_a_directory));
  }
  if (std::filesystem::exists(there) && !std::filesystem::is_regular_file(there)) {
    throw ExportError(place.name + ": is a device or a pipe; for stdout, leave -o out");
  }
  std::filesystem::remove(new_, error);
#if !defined(_WIN32)
  // In a folder that others use too, nothing of theirs is opened.
  const int made = open(newName().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (made < 0) Fail({errno, std::generic_category()});
  close(made);
#endif
}

NewFile::~NewFile() {
  file_.reset();
  std::error_code ignored;
  if (!isDone_) std::filesystem::remove(new_, ignored);
}

void NewFile::Write(std::string_view bytes) {
  if (file_ == nullptr) file_.reset(std::fopen(newName().c_str(), "wb"));
  if (file_ == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
    Fail({errno, std::generic_category()});
  }
}

void NewFile::Commit() {
  if (file_ != nullptr && std::fclose(file_.release()) != 0) {
    Fail({errno, std::generic_category()});
  }
  std::error_code error;
  std::filesystem::rename(new_, place_.path, error);
  if (error) Fail(error);
  isDone_ = true;
}

void NewFile::Fail(const std::error_code& error) const {
  throw ExportError(place_.name + ": " + error.message());
}

}  // namespace zvrsit
