//===- file_posix.cpp - Files, folders and searches on POSIX ---------------===//
#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

#include "platform/errors.h"
#include "platform/file.h"
#include "platform/text.h"
#include "tavi/text/wildcard.h"

namespace tavi {

// An open file: the descriptor and the block that gathers small reads and writes.
//
// The block is in one of three states. Idle: empty. Reading: bytes [0, filled) were
// read ahead from the file, cursor is the next one to deliver. Writing: bytes
// [0, cursor) are waiting to be written at the descriptor's position. offset is
// always the descriptor's own position, so the caller's position is known without
// a system call.
struct XFileHandleRecord {
  enum class Mode : uint8_t { kIdle, kReading, kWriting };

  int fd = -1;
  bool can_read = false;
  bool can_write = false;
  Mode mode = Mode::kIdle;
  // Held by the thread working on the file; FlushAllFiles only tries it.
  std::atomic<bool> busy{false};
  // Holders of the handle (copies of a file object); the last close closes.
  std::atomic<uint32_t> holders{1};
  uint8_t* block = nullptr;
  uint32_t cursor = 0;
  uint32_t filled = 0;
  uint64_t offset = 0;
  XFileHandleRecord* prev = nullptr;
  XFileHandleRecord* next = nullptr;
};

struct XFindHandleRecord {
  DIR* dir = nullptr;
  std::atomic<uint32_t> holders{1};
  std::u16string mask;
};

}  // namespace tavi

namespace tavi::platform {

namespace {

using Record = XFileHandleRecord;
using Mode = XFileHandleRecord::Mode;

// 64 KiB: large enough that a field-by-field serialiser makes one system call per
// many thousand fields, small enough to stay in the cache. Transfers of at least
// half a block bypass it.
constexpr uint32_t kBlockSize = 64 * 1024;
constexpr uint32_t kDirectSize = kBlockSize / 2;

// --- Errors and names ----------------------------------------------------------

bool Fail(uint32_t code) {
  SetLastError(code);
  return false;
}

// The parent folder of a native path ("." when it has none).
std::string ParentOf(const std::string& path) {
  size_t end = path.size();
  while (end > 1 && path[end - 1] == '/') --end;
  const size_t slash = path.rfind('/', end - 1);
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// The platform error of errno for an operation on path. A missing name is "file
// not found" (2) when its folder exists and "path not found" (3) when a folder
// along the path is missing.
uint32_t PathError(int error, const std::string& path) {
  if (error == ENOENT) {
    struct stat st;
    const std::string parent = ParentOf(path);
    return stat(parent.c_str(), &st) == 0 && S_ISDIR(st.st_mode) ? kErrorFileNotFound
                                                                 : kErrorPathNotFound;
  }
  return ErrorFromErrno(error);
}

bool FailPath(const std::string& path) {
  return Fail(PathError(errno, path));
}

// The native (UTF-8) form of a name. A name ends at its first 0 unit, as the
// system's own names do; an empty name is "path not found".
bool NativeName(const char16_t* name, uint32_t units, std::string& out) {
  uint32_t length = 0;
  if (name != nullptr) {
    while (length < units && name[length] != 0) ++length;
  }
  if (length == 0) return Fail(kErrorPathNotFound);
  out = Utf16ToUtf8(name, length);
  return true;
}

XFileTime FromTimespec(int64_t seconds, int64_t nanoseconds) {
  return XFileTime{static_cast<uint64_t>(seconds * 10000000 + nanoseconds / 100) +
                   kFileTimeOfUnixEpoch};
}

// --- Raw descriptor transfers ----------------------------------------------------

bool WriteAll(Record& r, const uint8_t* data, size_t bytes, size_t& written) {
  written = 0;
  while (written < bytes) {
    const ssize_t n = ::write(r.fd, data + written, bytes - written);
    if (n < 0) {
      if (errno == EINTR) continue;
      return Fail(ErrorFromErrno(errno));
    }
    if (n == 0) return Fail(kErrorDiskFull);
    written += static_cast<size_t>(n);
    r.offset += static_cast<uint64_t>(n);
  }
  return true;
}

// Reads until bytes arrived or the file ended; -1 on failure.
int64_t ReadAll(Record& r, uint8_t* data, size_t bytes) {
  size_t got = 0;
  while (got < bytes) {
    const ssize_t n = ::read(r.fd, data + got, bytes - got);
    if (n < 0) {
      if (errno == EINTR) continue;
      Fail(ErrorFromErrno(errno));
      return -1;
    }
    if (n == 0) break;
    got += static_cast<size_t>(n);
    r.offset += static_cast<uint64_t>(n);
  }
  return static_cast<int64_t>(got);
}

// --- The gathering block -----------------------------------------------------------

// Writes the gathered bytes. On failure the bytes not written stay gathered.
bool PushGathered(Record& r) {
  if (r.mode != Mode::kWriting) return true;
  size_t written = 0;
  const bool ok = WriteAll(r, r.block, r.cursor, written);
  if (!ok) {
    std::memmove(r.block, r.block + written, r.cursor - written);
    r.cursor -= static_cast<uint32_t>(written);
    return false;
  }
  r.cursor = 0;
  r.mode = Mode::kIdle;
  return true;
}

// Gives back the bytes read ahead: the descriptor returns to the caller's position.
bool DropReadAhead(Record& r) {
  if (r.mode != Mode::kReading) return true;
  const uint64_t position = r.offset - (r.filled - r.cursor);
  if (position != r.offset) {
    if (::lseek(r.fd, static_cast<off_t>(position), SEEK_SET) < 0) {
      return Fail(ErrorFromErrno(errno));
    }
    r.offset = position;
  }
  r.mode = Mode::kIdle;
  r.cursor = r.filled = 0;
  return true;
}

// Empties the block, so that the descriptor's position is the caller's.
bool Settle(Record& r) {
  return r.mode == Mode::kWriting ? PushGathered(r) : DropReadAhead(r);
}

uint64_t CallerPosition(const Record& r) {
  switch (r.mode) {
    case Mode::kReading:
      return r.offset - (r.filled - r.cursor);
    case Mode::kWriting:
      return r.offset + r.cursor;
    case Mode::kIdle:
      break;
  }
  return r.offset;
}

bool EnsureBlock(Record& r) {
  if (r.block == nullptr) r.block = static_cast<uint8_t*>(std::malloc(kBlockSize));
  return r.block != nullptr;
}

// Holds a file for the calling thread for the length of one operation.
class Using {
 public:
  explicit Using(Record* r) : r_(r) {
    while (r_->busy.exchange(true, std::memory_order_acquire)) sched_yield();
  }
  ~Using() { r_->busy.store(false, std::memory_order_release); }
  Using(const Using&) = delete;
  Using& operator=(const Using&) = delete;

 private:
  Record* r_;
};

// --- The list of open files (for FlushAllFiles) ---------------------------------

std::mutex& OpenFilesLock() {
  static std::mutex lock;
  return lock;
}
Record* g_open_files = nullptr;

void Register(Record* r) {
  std::lock_guard<std::mutex> hold(OpenFilesLock());
  r->next = g_open_files;
  if (g_open_files != nullptr) g_open_files->prev = r;
  g_open_files = r;
}

void Unregister(Record* r) {
  std::lock_guard<std::mutex> hold(OpenFilesLock());
  if (r->prev != nullptr) r->prev->next = r->next;
  if (r->next != nullptr) r->next->prev = r->prev;
  if (g_open_files == r) g_open_files = r->next;
  r->prev = r->next = nullptr;
}

void Release(Record* r) {
  Unregister(r);
  std::free(r->block);
  delete r;
}

bool IsDirectoryFd(int fd) {
  struct stat st;
  return fstat(fd, &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace

// --- Open files -------------------------------------------------------------------

XFileHandle OpenFile(const char16_t* name, uint32_t units, const OpenRequest& request) {
  std::string path;
  if (!NativeName(name, units, path)) return nullptr;
  int flags = O_CLOEXEC;
  if (request.read && request.write) {
    flags |= O_RDWR;
  } else if (request.write) {
    flags |= O_WRONLY;
  } else {
    flags |= O_RDONLY;
  }
  switch (request.disposition) {
    case kCreateAlways:
      flags |= O_CREAT | O_TRUNC;
      break;
    case kOpenExisting:
      break;
    case kOpenAlways:
      flags |= O_CREAT;
      break;
    case kTruncateExisting:
      // Emptying a file needs the right to write it.
      if (!request.write) return Fail(kErrorInvalidParameter), nullptr;
      flags |= O_TRUNC;
      break;
    default:
      return Fail(kErrorInvalidParameter), nullptr;
  }
  // Bytes gathered by other handles reach the file before it is opened again.
  FlushAllFiles();
  const mode_t permissions = request.read_only ? 0444 : 0666;
  int fd;
  do {
    fd = ::open(path.c_str(), flags, permissions);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) return FailPath(path), nullptr;
  if (IsDirectoryFd(fd)) {
    ::close(fd);
    return Fail(kErrorAccessDenied), nullptr;
  }
  Record* r = new (std::nothrow) Record;
  if (r == nullptr) {
    ::close(fd);
    return Fail(kErrorNotEnoughMemory), nullptr;
  }
  r->fd = fd;
  r->can_read = request.read;
  r->can_write = request.write;
  Register(r);
  return r;
}

void RetainFile(XFileHandle file) {
  file->holders.fetch_add(1, std::memory_order_relaxed);
}

bool CloseFile(XFileHandle file) {
  {
    Using hold(file);
    if (!PushGathered(*file)) return false;
  }
  // Another holder goes on using the file: leave it open.
  if (file->holders.fetch_sub(1, std::memory_order_acq_rel) > 1) return true;
  {
    Using hold(file);
    if (file->fd >= 0) {
      const int fd = file->fd;
      // The descriptor is gone whatever close reports; a retry only releases the
      // record, which stays valid for it.
      file->fd = -1;
      if (::close(fd) != 0 && errno != EINTR) {
        file->holders.store(1, std::memory_order_relaxed);
        return Fail(ErrorFromErrno(errno));
      }
    }
  }
  Release(file);
  return true;
}

void DiscardFile(XFileHandle file) {
  if (file->holders.fetch_sub(1, std::memory_order_acq_rel) > 1) return;
  {
    Using hold(file);
    if (file->fd >= 0) ::close(file->fd);
    file->fd = -1;
  }
  Release(file);
}

int64_t ReadFile(XFileHandle file, void* data, uint32_t bytes) {
  Using hold(file);
  Record& r = *file;
  if (!r.can_read) return Fail(kErrorAccessDenied), -1;
  if (bytes == 0) return 0;
  auto* out = static_cast<uint8_t*>(data);
  if (r.mode == Mode::kReading && r.filled - r.cursor >= bytes) {
    std::memcpy(out, r.block + r.cursor, bytes);
    r.cursor += bytes;
    return bytes;
  }
  if (!PushGathered(r)) return -1;
  uint32_t got = 0;
  if (r.mode == Mode::kReading) {
    got = r.filled - r.cursor;
    std::memcpy(out, r.block + r.cursor, got);
    r.mode = Mode::kIdle;
    r.cursor = r.filled = 0;
  }
  const uint32_t rest = bytes - got;
  if (rest == 0) return got;
  if (rest >= kDirectSize || !EnsureBlock(r)) {
    const int64_t n = ReadAll(r, out + got, rest);
    return n < 0 ? -1 : got + n;
  }
  const int64_t n = ReadAll(r, r.block, kBlockSize);
  if (n < 0) return -1;
  r.mode = Mode::kReading;
  r.filled = static_cast<uint32_t>(n);
  const uint32_t take = rest < r.filled ? rest : r.filled;
  std::memcpy(out + got, r.block, take);
  r.cursor = take;
  return got + take;
}

bool WriteFile(XFileHandle file, const void* data, uint32_t bytes) {
  Using hold(file);
  Record& r = *file;
  if (!r.can_write) return Fail(kErrorAccessDenied);
  if (bytes == 0) return true;
  const auto* in = static_cast<const uint8_t*>(data);
  if (r.mode == Mode::kWriting && kBlockSize - r.cursor >= bytes) {
    std::memcpy(r.block + r.cursor, in, bytes);
    r.cursor += bytes;
    return true;
  }
  if (!Settle(r)) return false;
  if (bytes >= kDirectSize || !EnsureBlock(r)) {
    size_t written;
    return WriteAll(r, in, bytes, written);
  }
  std::memcpy(r.block, in, bytes);
  r.cursor = bytes;
  r.mode = Mode::kWriting;
  return true;
}

bool FlushFile(XFileHandle file) {
  Using hold(file);
  return PushGathered(*file);
}

bool SeekFile(XFileHandle file, int64_t distance, int32_t method, uint64_t& position,
              bool keep_read_ahead) {
  Using hold(file);
  Record& r = *file;
  int64_t base;
  switch (method) {
    case 0:
      base = 0;
      break;
    case 1:
      base = static_cast<int64_t>(CallerPosition(r));
      break;
    case 2: {
      if (!PushGathered(r)) return false;
      struct stat st;
      if (fstat(r.fd, &st) != 0) return Fail(ErrorFromErrno(errno));
      base = st.st_size;
      break;
    }
    default:
      return Fail(kErrorInvalidParameter);
  }
  const int64_t target = base + distance;
  if (target < 0) return Fail(kErrorNegativeSeek);
  const auto wanted = static_cast<uint64_t>(target);
  // A move within the bytes read ahead only moves the cursor.
  if (keep_read_ahead && r.mode == Mode::kReading && wanted <= r.offset &&
      r.offset - wanted <= r.filled) {
    r.cursor = r.filled - static_cast<uint32_t>(r.offset - wanted);
    position = wanted;
    return true;
  }
  if (!Settle(r)) return false;
  if (wanted != r.offset) {
    const off_t moved = ::lseek(r.fd, static_cast<off_t>(wanted), SEEK_SET);
    if (moved < 0) return Fail(ErrorFromErrno(errno));
    r.offset = static_cast<uint64_t>(moved);
  }
  position = r.offset;
  return true;
}

bool FilePosition(XFileHandle file, uint64_t& position) {
  Using hold(file);
  position = CallerPosition(*file);
  return true;
}

bool FileSize(XFileHandle file, uint64_t& size) {
  Using hold(file);
  if (!PushGathered(*file)) return false;
  struct stat st;
  if (fstat(file->fd, &st) != 0) return Fail(ErrorFromErrno(errno));
  size = static_cast<uint64_t>(st.st_size);
  return true;
}

bool TruncateFile(XFileHandle file) {
  Using hold(file);
  Record& r = *file;
  if (!r.can_write) return Fail(kErrorAccessDenied);
  if (!Settle(r)) return false;
  if (::ftruncate(r.fd, static_cast<off_t>(r.offset)) != 0) return Fail(ErrorFromErrno(errno));
  return true;
}

namespace {

// The times and size of a file, from statx where the system has it (for the birth
// time) and from stat otherwise.
struct FileFacts {
  bool directory, link, writable;
  uint64_t size;
  XFileTime created, accessed, written;
};

bool StatAt(int dirfd, const char* name, int flags, FileFacts& facts) {
#ifdef STATX_BTIME
  struct statx sx;
  if (statx(dirfd, name, flags, STATX_BASIC_STATS | STATX_BTIME, &sx) != 0) return false;
  facts.directory = S_ISDIR(sx.stx_mode);
  facts.link = S_ISLNK(sx.stx_mode);
  facts.writable = (sx.stx_mode & 0222) != 0;
  facts.size = sx.stx_size;
  const auto& born = (sx.stx_mask & STATX_BTIME) ? sx.stx_btime : sx.stx_ctime;
  facts.created = FromTimespec(born.tv_sec, born.tv_nsec);
  facts.accessed = FromTimespec(sx.stx_atime.tv_sec, sx.stx_atime.tv_nsec);
  facts.written = FromTimespec(sx.stx_mtime.tv_sec, sx.stx_mtime.tv_nsec);
#else
  struct stat st;
  if (fstatat(dirfd, name, &st, flags & AT_SYMLINK_NOFOLLOW) != 0) return false;
  facts.directory = S_ISDIR(st.st_mode);
  facts.link = S_ISLNK(st.st_mode);
  facts.writable = (st.st_mode & 0222) != 0;
  facts.size = static_cast<uint64_t>(st.st_size);
  facts.created = FromTimespec(st.st_ctim.tv_sec, st.st_ctim.tv_nsec);
  facts.accessed = FromTimespec(st.st_atim.tv_sec, st.st_atim.tv_nsec);
  facts.written = FromTimespec(st.st_mtim.tv_sec, st.st_mtim.tv_nsec);
#endif
  return true;
}

}  // namespace

bool FileTimes(XFileHandle file, XFileTime& created, XFileTime& accessed, XFileTime& written) {
  Using hold(file);
  if (!PushGathered(*file)) return false;
  FileFacts facts;
#ifdef STATX_BTIME
  if (!StatAt(file->fd, "", AT_EMPTY_PATH, facts)) return Fail(ErrorFromErrno(errno));
#else
  struct stat st;
  if (fstat(file->fd, &st) != 0) return Fail(ErrorFromErrno(errno));
  facts.created = FromTimespec(st.st_ctim.tv_sec, st.st_ctim.tv_nsec);
  facts.accessed = FromTimespec(st.st_atim.tv_sec, st.st_atim.tv_nsec);
  facts.written = FromTimespec(st.st_mtim.tv_sec, st.st_mtim.tv_nsec);
#endif
  created = facts.created;
  accessed = facts.accessed;
  written = facts.written;
  return true;
}

void FlushAllFiles() {
  const uint32_t kept = LastError();
  std::lock_guard<std::mutex> hold(OpenFilesLock());
  for (Record* r = g_open_files; r != nullptr; r = r->next) {
    // A file that another thread is using right now is left to that thread.
    if (r->busy.exchange(true, std::memory_order_acquire)) continue;
    if (r->mode == Mode::kWriting) PushGathered(*r);
    r->busy.store(false, std::memory_order_release);
  }
  SetLastError(kept);
}

// --- Names ------------------------------------------------------------------------

int PathExists(const char16_t* name, uint32_t units) {
  std::string path;
  if (!NativeName(name, units, path)) return ENOENT;
  return ::access(path.c_str(), F_OK) == 0 ? 0 : errno;
}

bool DeleteFile(const char16_t* name, uint32_t units) {
  std::string path;
  if (!NativeName(name, units, path)) return false;
  if (::unlink(path.c_str()) != 0) return FailPath(path);
  return true;
}

namespace {

// Copies the bytes of in to out, in the kernel where it can.
bool CopyBytes(int in, int out) {
  bool kernel = true;
  for (;;) {
    ssize_t n;
    if (kernel) {
      n = ::copy_file_range(in, nullptr, out, nullptr, 1 << 30, 0);
      if (n < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP)) {
        kernel = false;
        continue;
      }
    } else {
      static thread_local uint8_t chunk[kBlockSize];
      n = ::read(in, chunk, sizeof chunk);
      if (n > 0) {
        ssize_t done = 0;
        while (done < n) {
          const ssize_t w = ::write(out, chunk + done, static_cast<size_t>(n - done));
          if (w < 0 && errno == EINTR) continue;
          if (w <= 0) return Fail(w == 0 ? kErrorDiskFull : ErrorFromErrno(errno));
          done += w;
        }
      }
    }
    if (n == 0) return true;
    if (n < 0) {
      if (errno == EINTR) continue;
      return Fail(ErrorFromErrno(errno));
    }
  }
}

bool CopyNative(const std::string& from, const std::string& to) {
  const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return FailPath(from);
  struct stat st;
  if (fstat(in, &st) != 0 || S_ISDIR(st.st_mode)) {
    const uint32_t code = S_ISDIR(st.st_mode) ? kErrorAccessDenied : ErrorFromErrno(errno);
    ::close(in);
    return Fail(code);
  }
  const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (out < 0) {
    const uint32_t code = errno == EEXIST ? kErrorFileExists : PathError(errno, to);
    ::close(in);
    return Fail(code);
  }
  bool ok = CopyBytes(in, out);
  if (ok) {
    const struct timespec times[2] = {st.st_atim, st.st_mtim};
    ok = (::fchmod(out, st.st_mode & 07777) == 0 && ::futimens(out, times) == 0) ||
         Fail(ErrorFromErrno(errno));
  }
  if (::close(out) != 0 && ok) ok = Fail(ErrorFromErrno(errno));
  ::close(in);
  if (!ok) {
    const uint32_t code = LastError();
    ::unlink(to.c_str());
    return Fail(code);
  }
  return true;
}

}  // namespace

bool CopyFile(const char16_t* from, uint32_t from_units, const char16_t* to, uint32_t to_units) {
  std::string source, target;
  if (!NativeName(from, from_units, source) || !NativeName(to, to_units, target)) return false;
  FlushAllFiles();
  return CopyNative(source, target);
}

bool MoveFile(const char16_t* from, uint32_t from_units, const char16_t* to, uint32_t to_units) {
  std::string source, target;
  if (!NativeName(from, from_units, source) || !NativeName(to, to_units, target)) return false;
  // Bytes gathered for the file reach it before it goes elsewhere.
  FlushAllFiles();
  if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  int error = errno;
  if (error == EINVAL || error == ENOSYS || error == EOPNOTSUPP) {
    // The file system cannot rename without replacing: link and unlink for files,
    // a checked rename for folders.
    if (::link(source.c_str(), target.c_str()) == 0) {
      if (::unlink(source.c_str()) == 0) return true;
      error = errno;
      ::unlink(target.c_str());
    } else if (errno == EPERM) {
      struct stat st;
      if (::lstat(target.c_str(), &st) == 0) return Fail(kErrorAlreadyExists);
      if (::rename(source.c_str(), target.c_str()) == 0) return true;
      error = errno;
    } else {
      error = errno;
    }
  }
  if (error == EXDEV) {
    struct stat st;
    if (::lstat(source.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) return Fail(kErrorNotSameDevice);
    if (!CopyNative(source, target)) return false;
    if (::unlink(source.c_str()) == 0) return true;
    error = errno;
    ::unlink(target.c_str());
    return Fail(ErrorFromErrno(error));
  }
  if (error == ENOENT) {
    struct stat st;
    return Fail(::lstat(source.c_str(), &st) == 0 ? PathError(error, target)
                                                  : PathError(error, source));
  }
  return Fail(ErrorFromErrno(error));
}

bool RenameReplacing(const char16_t* from, uint32_t from_units, const char16_t* to,
                     uint32_t to_units) {
  std::string source, target;
  if (!NativeName(from, from_units, source) || !NativeName(to, to_units, target)) return false;
  if (::rename(source.c_str(), target.c_str()) != 0) return FailPath(source);
  return true;
}

bool CreateDirectory(const char16_t* name, uint32_t units) {
  std::string path;
  if (!NativeName(name, units, path)) return false;
  if (::mkdir(path.c_str(), 0777) != 0) return FailPath(path);
  return true;
}

bool RemoveDirectory(const char16_t* name, uint32_t units) {
  std::string path;
  if (!NativeName(name, units, path)) return false;
  if (::rmdir(path.c_str()) == 0) return true;
  if (errno == ENOTDIR) return Fail(kErrorDirectory);
  if (errno == EEXIST) return Fail(kErrorDirNotEmpty);
  return FailPath(path);
}

bool SetCurrentDirectory(const char16_t* name, uint32_t units) {
  std::string path;
  if (!NativeName(name, units, path)) return false;
  if (::chdir(path.c_str()) == 0) return true;
  if (errno == ENOTDIR) return Fail(kErrorDirectory);
  return FailPath(path);
}

bool GetCurrentDirectory(std::u16string& path) {
  std::string native(256, '\0');
  for (;;) {
    if (::getcwd(native.data(), native.size()) != nullptr) break;
    if (errno != ERANGE || native.size() >= (1u << 20)) return Fail(ErrorFromErrno(errno));
    native.resize(native.size() * 2);
  }
  native.resize(std::strlen(native.c_str()));
  path = Utf8ToUtf16(native.data(), native.size());
  return true;
}

namespace {

std::string HomeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  struct passwd pw;
  struct passwd* found = nullptr;
  char area[4096];
  if (getpwuid_r(getuid(), &pw, area, sizeof area, &found) == 0 && found != nullptr &&
      found->pw_dir != nullptr) {
    return found->pw_dir;
  }
  return {};
}

// An XDG variable counts only when it holds an absolute path.
std::string XdgFolder(const char* variable, const char* below_home) {
  const char* value = std::getenv(variable);
  if (value != nullptr && value[0] == '/') return value;
  const std::string home = HomeFolder();
  return home.empty() ? home : home + below_home;
}

// Creates every missing folder of an absolute path.
bool CreatePath(const std::string& path) {
  for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string part = path.substr(0, slash);
    if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) return false;
    if (slash == std::string::npos) break;
  }
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace

bool KnownFolder(int32_t folder, bool create, std::u16string& path) {
  std::string native;
  switch (folder & 0xFF) {
    case 26:
      native = XdgFolder("XDG_CONFIG_HOME", "/.config");
      break;
    case 28:
      native = XdgFolder("XDG_DATA_HOME", "/.local/share");
      break;
    case 5: {
      const std::string home = HomeFolder();
      if (!home.empty()) native = home + "/Documents";
      break;
    }
    default:
      break;
  }
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  if (native.empty()) return Fail(kErrorPathNotFound);
  if (create && !CreatePath(native)) return Fail(kErrorPathNotFound);
  path = Utf8ToUtf16(native.data(), native.size());
  return true;
}

// --- Folder searches ---------------------------------------------------------------

namespace {

// Reads entries until one matches; false at the end (18) or on failure.
bool NextMatch(XFindHandleRecord& search, XFindData& data) {
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(search.dir);
    if (entry == nullptr) return Fail(errno != 0 ? ErrorFromErrno(errno) : kErrorNoMoreFiles);
    const std::u16string name = Utf8ToUtf16(entry->d_name, std::strlen(entry->d_name));
    if (name.size() >= sizeof data.name / sizeof data.name[0]) continue;
    if (!XWildcardMatch(search.mask.data(), search.mask.size(), name.data(), name.size(),
                        kWildcardFileName)) {
      continue;
    }
    FileFacts facts;
    const int dirfd = ::dirfd(search.dir);
    bool link = false;
    FileFacts own;
    if (StatAt(dirfd, entry->d_name, AT_SYMLINK_NOFOLLOW, own)) link = own.link;
    if (!StatAt(dirfd, entry->d_name, 0, facts)) {
      // A dangling link is reported as what it is; an entry that vanished is skipped.
      if (!link) continue;
      facts = own;
    }
    data.attributes = facts.directory ? kFileAttributeDirectory : kFileAttributeNormal;
    if (!facts.writable) data.attributes |= kFileAttributeReadOnly;
    if (name[0] == u'.' && name != u"." && name != u"..") {
      data.attributes |= kFileAttributeHidden;
    }
    if (link) data.attributes |= kFileAttributeReparse;
    data.created = facts.created;
    data.accessed = facts.accessed;
    data.written = facts.written;
    data.size = facts.directory ? 0 : facts.size;
    name.copy(data.name, name.size());
    data.name[name.size()] = 0;
    return true;
  }
}

}  // namespace

XFindHandle FindFirst(const char16_t* pattern, uint32_t units, XFindData& data) {
  std::string path;
  if (!NativeName(pattern, units, path)) return nullptr;
  std::string folder = ".";
  std::string mask = path;
  const size_t slash = path.rfind('/');
  if (slash != std::string::npos) {
    folder = slash == 0 ? "/" : path.substr(0, slash);
    mask = path.substr(slash + 1);
  }
  auto* search = new (std::nothrow) XFindHandleRecord;
  if (search == nullptr) return Fail(kErrorNotEnoughMemory), nullptr;
  search->mask = Utf8ToUtf16(mask.data(), mask.size());
  FlushAllFiles();
  search->dir = ::opendir(folder.c_str());
  if (search->dir == nullptr) {
    const int error = errno;
    delete search;
    return Fail(error == ENOENT || error == ENOTDIR ? kErrorPathNotFound : ErrorFromErrno(error)),
           nullptr;
  }
  if (!search->mask.empty() && NextMatch(*search, data)) return search;
  const uint32_t code =
      search->mask.empty() || LastError() == kErrorNoMoreFiles ? kErrorFileNotFound : LastError();
  ::closedir(search->dir);
  delete search;
  return Fail(code), nullptr;
}

bool FindNext(XFindHandle search, XFindData& data) {
  return NextMatch(*search, data);
}

void RetainSearch(XFindHandle search) {
  search->holders.fetch_add(1, std::memory_order_relaxed);
}

bool FindClose(XFindHandle search) {
  if (search->holders.fetch_sub(1, std::memory_order_acq_rel) > 1) return true;
  const bool ok = ::closedir(search->dir) == 0;
  const int error = errno;
  delete search;
  return ok || Fail(ErrorFromErrno(error));
}

}  // namespace tavi::platform
