// File systems of a test's own, which only it and the programs that it runs see.
#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace zvrsit::test {

// From here on this process mounts for itself. False where the system does not let it.
inline bool OwnMounts() {
  const auto user = std::to_string(geteuid());
  const auto group = std::to_string(getegid());
  if (geteuid() == 0) {
    if (unshare(CLONE_NEWNS) != 0) return false;
  } else {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
    std::ofstream("/proc/self/gid_map") << "0 " + group + " 1";
  }
  return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// A file system in memory of `size` bytes at a native folder, until the end of this object.
class SmallDisk {
 public:
  SmallDisk(std::string folder, int size) : folder_(std::move(folder)) {
    const std::string options = "size=" + std::to_string(size);
    isThere_ = mount("tmpfs", folder_.c_str(), "tmpfs", 0, options.c_str()) == 0;
  }
  ~SmallDisk() {
    if (isThere_) umount2(folder_.c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool isThere() const { return isThere_; }
  bool SetReadOnly(bool readOnly) const {
    return mount(nullptr, folder_.c_str(), nullptr, MS_REMOUNT | (readOnly ? MS_RDONLY : 0),
                 nullptr) == 0;
  }
  // Takes all the room there is, or gives it back.
  void Fill() const {
    std::ofstream file(folder_ + "/filler");
    const std::string page(4096, 'x');
    while (file.write(page.data(), 4096).flush()) {
    }
  }
  void Empty() const { unlink((folder_ + "/filler").c_str()); }

 private:
  std::string folder_;
  bool isThere_ = false;
};

}  // namespace zvrsit::test
