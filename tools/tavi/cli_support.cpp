//===- cli_support.cpp - Shared pieces of the file subcommands -------------===//
//
// Error text, passwords, output files that appear only when complete, and the
// progress bar with Ctrl-C cancellation.
//
//===----------------------------------------------------------------------===//
#include "cli_support.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "tavi/core/string.h"
#include "tavi/core/user_interface.h"

namespace tavi::cli {

namespace {

std::string FromUtf16(const char16_t* text, size_t units) {
  std::string out;
  for (size_t i = 0; i < units; ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < units && text[i + 1] >= 0xDC00 &&
        text[i + 1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

// Reads a line from the terminal with echo off; false when there is no terminal.
bool Prompt(const char* question, std::string& answer) {
  const int fd = ::open("/dev/tty", O_RDWR | O_CLOEXEC);
  if (fd < 0) return false;
  termios saved{};
  const bool is_tty = ::tcgetattr(fd, &saved) == 0;
  if (is_tty) {
    termios quiet = saved;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(fd, TCSAFLUSH, &quiet);
  }
  [[maybe_unused]] ssize_t w = ::write(fd, question, std::strlen(question));
  answer.clear();
  char c;
  bool got = false;
  while (::read(fd, &c, 1) == 1) {
    got = true;
    if (c == '\n' || c == '\r') break;
    answer += c;
  }
  w = ::write(fd, "\n", 1);
  if (is_tty) ::tcsetattr(fd, TCSAFLUSH, &saved);
  ::close(fd);
  return got && is_tty;
}

// Ctrl-C reaches the running bar through this pointer; the flag is lock-free, so
// setting it is safe in a signal handler.
std::atomic<std::atomic<bool>*> g_cancel{nullptr};

extern "C" void OnInterrupt(int) {
  if (std::atomic<bool>* flag = g_cancel.load()) flag->store(true);
}

// The progress record's "window" is standard error: the bar redraws one line.
XWindowHandle* const kStderrWindow = reinterpret_cast<XWindowHandle*>(uintptr_t{2});

// The record being drawn; the library calls the table with its progress lock held,
// so the counts read here are consistent.
std::atomic<const strProgress*> g_drawn{nullptr};

// Draws "title [#####.....]  42%" from the record's counts, or the library's final
// title ("packing done") as it stands.
bool DrawTitle(XWindow window, const char16_t* text) {
  if (window != kStderrWindow) return XDefaultUserInterface()->set_window_text(window, text);
  size_t n = 0;
  while (text[n] != 0) ++n;
  std::string line = FromUtf16(text, n);
  const strProgress* p = g_drawn.load();
  if (p != nullptr && p->state == kProgressRunning && p->total != kProgressTotalUnknown &&
      p->total != 0 && p->done < p->total) {
    const std::string title = FromUtf16(p->title.c_str(), p->title.GetBufferPos() / 2);
    const auto percent = static_cast<unsigned>(p->done * 100 / p->total);
    line = title + "[" + std::string(percent / 5, '#') + std::string(20 - percent / 5, '.') + "] " +
           std::to_string(percent) + "%";
  }
  std::fprintf(stderr, "\r%s\033[K", line.c_str());
  std::fflush(stderr);
  return true;
}

XUserInterface MakeTerminalTable() {
  XUserInterface table = *XDefaultUserInterface();
  table.set_window_text = DrawTitle;
  return table;
}

constexpr uint64_t kProgressThreshold = 4u << 20;

}  // namespace

std::string ErrorText(const XError& error) {
  XError copy;
  copy.ImportErrorCode(error);
  XString16 message;
  message.EmptyString();
  copy.AddErrorMessage(message);
  std::string text = FromUtf16(message.c_str(), message.GetBufferPos() / 2);
  while (!text.empty() && (text.back() == '.' || text.back() == '\n' || text.back() == ' '))
    text.pop_back();
  return text;
}

std::u16string ToUtf16(std::string_view text) {
  std::u16string out;
  for (size_t i = 0; i < text.size();) {
    const auto b = static_cast<unsigned char>(text[i]);
    char32_t c = b;
    size_t extra = b >= 0xF0 ? 3 : b >= 0xE0 ? 2 : b >= 0xC0 ? 1 : 0;
    if (extra != 0) c = b & (0x3F >> extra);
    if (i + extra >= text.size()) extra = text.size() - i - 1;
    for (size_t k = 1; k <= extra; ++k)
      c = (c << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
    i += extra + 1;
    if (c >= 0x10000) {
      out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      out += static_cast<char16_t>(c);
    }
  }
  return out;
}

int Fail(const char* command, std::string_view subject, std::string_view message) {
  std::fprintf(stderr, "tavi %s: %.*s: %.*s\n", command, static_cast<int>(subject.size()),
               subject.data(), static_cast<int>(message.size()), message.data());
  return 1;
}

bool AsksForHelp(std::span<char* const> args) {
  if (args.empty()) return false;
  const std::string_view what = args[0];
  if (what == "--help" || what == "-h" || what == "help") return true;
  for (char* const arg : args.subspan(1)) {
    if (std::string_view(arg) == "--help") return true;
  }
  return false;
}

int UsageError(const char* command, std::string_view problem, std::string_view detail) {
  std::fprintf(stderr, "tavi %s: %.*s%.*s (try 'tavi %s --help')\n", command,
               static_cast<int>(problem.size()), problem.data(), static_cast<int>(detail.size()),
               detail.data(), command);
  return 2;
}

bool GetPassword(const char* password_file, bool confirm, std::u16string& password,
                 std::string& problem) {
  std::string text;
  if (password_file != nullptr) {
    std::FILE* f = std::fopen(password_file, "rb");
    if (f == nullptr) {
      problem = std::string(password_file) + ": " + std::strerror(errno);
      return false;
    }
    int c;
    while ((c = std::fgetc(f)) != EOF && c != '\n') text += static_cast<char>(c);
    std::fclose(f);
    if (!text.empty() && text.back() == '\r') text.pop_back();
  } else if (const char* env = std::getenv("TAVI_PASSWORD")) {
    text = env;
  } else {
    if (!Prompt("Password: ", text)) {
      problem = "a password is needed: give --password-file or set TAVI_PASSWORD";
      return false;
    }
    if (confirm) {
      std::string again;
      if (!Prompt("Password again: ", again) || again != text) {
        problem = "the passwords differ";
        return false;
      }
    }
  }
  password = ToUtf16(text);
  return true;
}

bool OutputFile::Open(const std::string& target, bool force, std::string& problem) {
  target_ = target;
  if (target == "-") {
    stdout_ = true;
    file_ = stdout;
    return true;
  }
  struct stat st {};
  if (!force && ::lstat(target.c_str(), &st) == 0) {
    problem = "exists (use --force to replace it)";
    return false;
  }
  const size_t slash = target.rfind('/');
  const std::string dir = slash == std::string::npos ? "" : target.substr(0, slash + 1);
  std::string pattern = dir + ".tavi-tmp-XXXXXX";
  const int fd = ::mkstemp(pattern.data());
  if (fd < 0) {
    problem = std::strerror(errno);
    return false;
  }
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(fd, 0666 & ~mask);
  temp_ = pattern;
  file_ = ::fdopen(fd, "wb");
  if (file_ == nullptr) {
    problem = std::strerror(errno);
    ::close(fd);
    Abort();
    return false;
  }
  return true;
}

bool OutputFile::Write(const void* data, size_t bytes) {
  return bytes == 0 || std::fwrite(data, 1, bytes, file_) == bytes;
}

bool OutputFile::Commit(const int64_t* mtime_sec, uint32_t mtime_nsec, std::string& problem) {
  if (stdout_) {
    if (std::fflush(stdout) != 0) {
      problem = std::strerror(errno);
      return false;
    }
    return true;
  }
  std::FILE* f = file_;
  file_ = nullptr;
  if (std::fclose(f) != 0) {
    problem = std::strerror(errno);
    Abort();
    return false;
  }
  if (mtime_sec != nullptr) {
    timespec times[2];
    times[0].tv_sec = 0;
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(*mtime_sec);
    times[1].tv_nsec = static_cast<long>(mtime_nsec);
    ::utimensat(AT_FDCWD, temp_.c_str(), times, 0);
  }
  if (std::rename(temp_.c_str(), target_.c_str()) != 0) {
    problem = std::strerror(errno);
    Abort();
    return false;
  }
  temp_.clear();
  return true;
}

void OutputFile::Abort() {
  if (stdout_) return;
  if (file_ != nullptr) std::fclose(file_);
  file_ = nullptr;
  if (!temp_.empty()) std::remove(temp_.c_str());
  temp_.clear();
}

bool InputFile::Open(const std::string& name, std::string& problem) {
  if (name == "-") {
    file = stdin;
  } else {
    file = std::fopen(name.c_str(), "rb");
    if (file == nullptr) {
      problem = std::strerror(errno);
      return false;
    }
  }
  struct stat st {};
  if (::fstat(::fileno(file), &st) == 0 && S_ISREG(st.st_mode)) {
    regular = true;
    size = static_cast<uint64_t>(st.st_size);
    mtime_sec = st.st_mtim.tv_sec;
    mtime_nsec = static_cast<uint32_t>(st.st_mtim.tv_nsec);
  } else if (name != "-" && S_ISDIR(st.st_mode)) {
    problem = "is a folder";
    return false;
  } else {
    // A pipe has no time of its own: the data is as new as now.
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    mtime_sec = now.tv_sec;
    mtime_nsec = static_cast<uint32_t>(now.tv_nsec);
  }
  return true;
}

InputFile::~InputFile() {
  if (file != nullptr && file != stdin) std::fclose(file);
}

ProgressBar::ProgressBar() {
  g_cancel.store(&options_.cancel);
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
}

ProgressBar::~ProgressBar() {
  End(false);
  g_cancel.store(nullptr);
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
}

void ProgressBar::Start(const char* title, uint64_t total) {
  static const XUserInterface table = MakeTerminalTable();
  started_ = true;
  shown_ = ::isatty(STDERR_FILENO) == 1 &&
           (total == kProgressTotalUnknown || total >= kProgressThreshold);
  if (shown_) {
    XSetUserInterface(&table);
    options_.window = kStderrWindow;
  }
  title_ = ToUtf16(title);
  // Starting clears the cancel flag; a Ctrl-C that came before must not be lost.
  const bool interrupted = options_.cancel.load();
  ProgressStart(progress_, title_.data(), static_cast<uint32_t>(title_.size()), total, options_);
  if (interrupted) options_.cancel.store(true);
  g_drawn.store(&progress_);
}

bool ProgressBar::Update(uint64_t done) {
  const bool running = ProgressSet(progress_, done) == kProgressRunning;
  // The record redraws only when its whole percentage step changes; the bar moves
  // at least every fifth of a second.
  const auto now = std::chrono::steady_clock::now();
  if (shown_ && running && now - last_draw_ >= std::chrono::milliseconds(200)) {
    last_draw_ = now;
    ProgressSetTitleValue(progress_);
  }
  return running;
}

bool ProgressBar::Cancelled() const {
  return options_.cancel.load();
}

void ProgressBar::End(bool ok) {
  if (!started_) return;
  started_ = false;
  ProgressEnd(progress_, ok);
  g_drawn.store(nullptr);
  if (shown_) {
    std::fputc('\n', stderr);
    XSetUserInterface(nullptr);
  }
}

}  // namespace tavi::cli
