//===- cli_support.h - Shared pieces of the file subcommands ---*- C++ -*-===//
//
// Error text, passwords, output files that appear only when complete, and the
// progress bar with Ctrl-C cancellation, for the subcommands that read and write
// files.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

#include "tavi/core/error.h"
#include "tavi/core/user_interface.h"
#include "tavi/thread/progress.h"

namespace tavi::cli {

// The library's message for the error, in UTF-8, without a final full stop.
std::string ErrorText(const XError& error);
std::u16string ToUtf16(std::string_view text);

// Prints "tavi <command>: <subject>: <message>" on standard error and returns 1,
// the exit status of a failure.
int Fail(const char* command, std::string_view subject, std::string_view message);
// Whether a command with subcommands is asked for its help: "--help", "-h" or
// "help" in place of the subcommand, or "--help" anywhere after it.
bool AsksForHelp(std::span<char* const> args);
// Prints "tavi <command>: <problem><detail> (try 'tavi <command> --help')" on
// standard error and returns 2, the exit status of a usage error.
int UsageError(const char* command, std::string_view problem, std::string_view detail = {});

// The password comes from the file (its first line), else TAVI_PASSWORD, else a
// prompt without echo on the terminal (asked twice when `confirm`). False with the
// reason in `problem` when there is none or it cannot be read.
bool GetPassword(const char* password_file, bool confirm, std::u16string& password,
                 std::string& problem);

// OutputFile writes to a temporary file beside the target and renames it over the
// target only in Commit, so that a failure or a cancellation leaves nothing. "-" is
// standard output, written directly.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() { Abort(); }

  // False with the reason in `problem` when the target exists and `force` is not
  // set, or the temporary file cannot be made.
  bool Open(const std::string& target, bool force, std::string& problem);
  bool Write(const void* data, size_t bytes);
  // Flushes, sets the modification time when `mtime_sec` is not null, and renames.
  bool Commit(const int64_t* mtime_sec, uint32_t mtime_nsec, std::string& problem);
  // Removes the temporary file (nothing for standard output).
  void Abort();
  bool IsStdout() const { return stdout_; }

 private:
  std::string target_;
  std::string temp_;
  std::FILE* file_ = nullptr;
  bool stdout_ = false;
};

// An input file or standard input ("-"), with its size and modification time when
// it is a regular file (the current time for anything else).
struct InputFile {
  std::FILE* file = nullptr;
  bool regular = false;
  uint64_t size = 0;
  int64_t mtime_sec = 0;
  uint32_t mtime_nsec = 0;
  bool Open(const std::string& name, std::string& problem);
  ~InputFile();
};

// MessageBoxScope answers the library's message boxes with `box` while it lives:
// the library's default user-interface table with that one entry replaced. The
// table in use before is put back at the end.
class MessageBoxScope {
 public:
  explicit MessageBoxScope(decltype(XUserInterface::message_box) box)
      : table_(*XDefaultUserInterface()) {
    table_.message_box = box;
    saved_ = XSetUserInterface(&table_);
  }
  MessageBoxScope(const MessageBoxScope&) = delete;
  MessageBoxScope& operator=(const MessageBoxScope&) = delete;
  ~MessageBoxScope() { XSetUserInterface(saved_); }

 private:
  XUserInterface table_;
  const XUserInterface* saved_;
};

// Progress on standard error through the library's progress records, shown only
// when standard error is a terminal and the work is large. While a bar exists,
// Ctrl-C (or SIGTERM) sets its cancel flag instead of ending the program, so that
// the caller can remove partial output; one bar at a time.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();
  void Start(const char* title, uint64_t total);
  // False once Ctrl-C was pressed.
  bool Update(uint64_t done);
  bool Cancelled() const;
  void End(bool ok);

 private:
  strProgressOptions options_;
  strProgress progress_;
  std::u16string title_;
  bool shown_ = false;
  bool started_ = false;
  std::chrono::steady_clock::time_point last_draw_{};
};

}  // namespace tavi::cli
