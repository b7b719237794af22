// With an access control list the group's bits of the mode are the list's mask, a bound on what the list
// grants. As a mode they would be granted to the group, so the list comes first and the mode last.
#include "files/FileAttributes.h"

#include <endian.h>
#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vxkrn {
namespace {

constexpr mode_t kPermissions = 07777;
constexpr mode_t kSetIds = S_ISUID | S_ISGID;
constexpr const char* kAccessList = "system.posix_acl_access";
constexpr const char* kNfsAccessList = "system.nfs4_acl";

/// Reads a text or value of a size not known before. @return false with errno set
template <class Read>
bool ReadWhole(std::string* text, const Read& read) {
  do {
    const ssize_t size = read(nullptr, 0);
    if (size < 0) return false;
    text->resize(static_cast<std::size_t>(size));
    const ssize_t got = size > 0 ? read(text->data(), text->size()) : 0;
    if (got >= 0) return text->resize(static_cast<std::size_t>(got)), true;
  } while (errno == ERANGE);  // it grew
  return false;
}

bool ReadAttribute(int file, const char* name, std::string* value) {
  return ReadWhole(value, [&](char* to, std::size_t size) { return fgetxattr(file, name, to, size); });
}

bool IsMissing(int error) {
  return error == ENODATA || error == EOPNOTSUPP || error == ENOSYS;
}

/// Extended attributes of a file that may be written but not read cannot be kept.
bool IsOutOfReach(int error) {
  return IsMissing(error) || error == EACCES || error == EPERM;
}

/// Copies extended attributes. Those of users must be kept; labels of the system are kept where it lets us.
int CopyNotes(int from, int to) {
  std::string names;
  if (!ReadWhole(&names, [&](char* list, std::size_t size) { return flistxattr(from, list, size); })) {
    return IsOutOfReach(errno) ? 0 : errno;
  }
  for (const char* name = names.data(); name < names.data() + names.size(); name += std::strlen(name) + 1) {
    const std::string_view text = name;
    const bool isUsers = text.starts_with("user.");
    if (!isUsers && text != "security.selinux" && !text.starts_with("trusted.")) continue;
    std::string value;
    const bool isKept =
        ReadAttribute(from, name, &value) && fsetxattr(to, name, value.data(), value.size(), 0) == 0;
    if (!isKept && isUsers && !IsOutOfReach(errno)) return errno;
  }
  return 0;
}

/// Fits an access control list to another owning group. The group's entry grants nothing from now on. Members
/// of the old group now count among the others, who therefore get no more than that group had.
void DropGroup(std::string* list) {
  posix_acl_xattr_entry entry = {};
  constexpr std::size_t kFirst = sizeof(posix_acl_xattr_header);
  mode_t ofGroup = 07;
  const auto each = [&](const auto& use) {
    for (std::size_t at = kFirst; at + sizeof entry <= list->size(); at += sizeof entry) {
      std::memcpy(&entry, list->data() + at, sizeof entry);
      use();
      std::memcpy(list->data() + at, &entry, sizeof entry);
    }
  };
  each([&] {
    const int tag = le16toh(entry.e_tag);
    if (tag == ACL_GROUP_OBJ || tag == ACL_MASK) ofGroup &= le16toh(entry.e_perm);
    if (tag == ACL_GROUP_OBJ) entry.e_perm = 0;
  });
  each([&] {
    if (le16toh(entry.e_tag) == ACL_OTHER) entry.e_perm &= htole16(static_cast<uint16_t>(ofGroup));
  });
}

/// The same for a mode.
mode_t WithoutGroup(mode_t mode) {
  const mode_t ofGroup = (mode & S_IRWXG) >> 3;
  return (mode & ~static_cast<mode_t>(S_IRWXG | S_IRWXO)) | (mode & S_IRWXO & ofGroup);
}

/// Gives it the list that the old file has, or none; the folder may have given it one.
int CopyAccessList(int from, int to, bool hasGroup, bool* hasList) {
  std::string list;
  *hasList = ReadAttribute(from, kAccessList, &list);
  if (!*hasList && !IsMissing(errno)) return errno;
  if (!*hasList) return fremovexattr(to, kAccessList) == 0 || IsMissing(errno) ? 0 : errno;
  if (!hasGroup) DropGroup(&list);
  return fsetxattr(to, kAccessList, list.data(), list.size(), 0) == 0 ? 0 : errno;
}

}  // namespace

int TakeOverAttributes(int from, int to) {
  struct stat old = {};
  if (fstat(from, &old) != 0) return errno;
  const bool hasOwner = fchown(to, old.st_uid, old.st_gid) == 0;
  const bool hasGroup = hasOwner || fchown(to, static_cast<uid_t>(-1), old.st_gid) == 0;
  if (const int error = CopyNotes(from, to); error != 0) return error;
  mode_t mode = old.st_mode & kPermissions;
  if (!hasOwner) mode &= ~kSetIds;
  if (std::string list; ReadAttribute(from, kNfsAccessList, &list)) {
    // On NFS the mode follows from the list.
    if (hasGroup) return fsetxattr(to, kNfsAccessList, list.data(), list.size(), 0) == 0 ? 0 : errno;
    mode &= S_IRWXU;
  } else if (!IsMissing(errno)) {
    return errno;
  }
  bool hasList = false;
  if (const int error = CopyAccessList(from, to, hasGroup, &hasList); error != 0) return error;
  if (!hasGroup && !hasList) mode = WithoutGroup(mode);
  if (hasList) {
    struct stat now = {};
    if (fstat(to, &now) != 0) return errno;
    mode = (mode & kSetIds) | (now.st_mode & ~kSetIds & kPermissions);
  }
  return fchmod(to, mode) == 0 ? 0 : errno;
}

}  // namespace vxkrn
