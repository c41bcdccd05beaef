//===- cmd_lang.cpp - tavi lang: check language files and read their strings -===//
//
// "check" loads a language file the way TTextFileStringResource does and lists every
// line the loader refused, with its number and reason, plus the lines that look like
// definitions but read as comments. "get" loads the file and prints one string.
//
//===----------------------------------------------------------------------===//
#include <cstdio>
#include <string>
#include <string_view>
#include <unordered_map>

#include "cli_support.h"
#include "command.h"
#include "tavi/tavi.h"
#include "unicode_text.h"

namespace tavi::cli {

namespace {

constexpr const char* kLangHelp =
    "usage: tavi lang check FILE\n"
    "       tavi lang get FILE ID\n"
    "\n"
    "check loads FILE as a language file and prints a line \"FILE:LINE: ...\" for\n"
    "every definition the loader refuses (ID out of range, empty value, duplicate\n"
    "ID) and a note for lines that begin with digits not followed by '=' (they\n"
    "are comments). The last line sums up. Exit status 0 when the file is clean,\n"
    "1 when any line was refused or the file has no strings.\n"
    "\n"
    "get prints the text of the string ID (decimal, or hexadecimal after 0x) in\n"
    "UTF-8 followed by a newline. A file that loads with refused lines still gives\n"
    "the strings it holds, with a warning on standard error.\n";

// A duplicate ID shows a message box while loading; the program reports the line
// itself, so the box is dropped.
int32_t DropMessageBox(XWindow, const char16_t*, const char16_t*, uint32_t) {
  return kIdOk;
}

// Parses a string ID: decimal, or hexadecimal after "0x"; 1 .. 2147483646.
bool ParseId(std::string_view text, int32_t& id) {
  unsigned base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
    base = 16;
  }
  if (text.empty()) return false;
  uint64_t value = 0;
  for (char c : text) {
    unsigned digit;
    if (c >= '0' && c <= '9')
      digit = static_cast<unsigned>(c - '0');
    else if (base == 16 && c >= 'a' && c <= 'f')
      digit = static_cast<unsigned>(c - 'a' + 10);
    else if (base == 16 && c >= 'A' && c <= 'F')
      digit = static_cast<unsigned>(c - 'A' + 10);
    else
      return false;
    value = value * base + digit;
    if (value > 0x7FFFFFFE) return false;
  }
  if (value == 0) return false;
  id = static_cast<int32_t>(value);
  return true;
}

struct CheckReport {
  std::string file;
  uint32_t lines = 0;
  uint32_t strings = 0;
  uint32_t problems = 0;
  // Line of the definition that was kept, for each ID added.
  std::unordered_map<int32_t, uint32_t> first_line;
};

void ReportLine(void* context, const XLanguageFileLine& line) {
  auto& report = *static_cast<CheckReport*>(context);
  report.lines = line.number;
  const std::string where = report.file + ":" + std::to_string(line.number) + ": ";
  const std::string digits = Utf8Of(line.digits, line.digit_count);
  switch (line.verdict) {
    case XLanguageLineVerdict::kComment:
      return;
    case XLanguageLineVerdict::kDigitsComment:
      std::printf("%snote: '%s' is not followed by '=', so the line is a comment\n", where.c_str(),
                  digits.c_str());
      return;
    case XLanguageLineVerdict::kAdded:
      ++report.strings;
      report.first_line.emplace(line.id, line.number);
      return;
    case XLanguageLineVerdict::kIdOutOfRange:
      std::printf("%sID %s is out of range (1 to 2147483646)\n", where.c_str(), digits.c_str());
      break;
    case XLanguageLineVerdict::kEmptyValue:
      std::printf("%sID %d has an empty value\n", where.c_str(), line.id);
      break;
    case XLanguageLineVerdict::kDuplicate: {
      const auto first = report.first_line.find(line.id);
      if (first != report.first_line.end())
        std::printf("%sID %d is a duplicate (first defined on line %u)\n", where.c_str(), line.id,
                    first->second);
      else
        std::printf("%sID %d is a duplicate\n", where.c_str(), line.id);
      break;
    }
    case XLanguageLineVerdict::kNotStored: {
      XError error;
      error.SetErrorCode(0x20000001);
      std::printf("%sID %d was not stored: %s\n", where.c_str(), line.id,
                  LibraryMessage(error).c_str());
      break;
    }
  }
  ++report.problems;
}

int Check(std::span<char* const> args) {
  if (args.size() != 1) return UsageError("lang", "check takes one file");
  const std::string file = args[0];
  XString16 path = Utf16NameOf(file);
  MessageBoxScope quiet(DropMessageBox);
  TTextFileStringResource table;
  XBuffer buffer;
  CheckReport report;
  report.file = file;
  table.LoadTextFile(buffer, path, ReportLine, &report);
  if (path.IsError()) return Fail("lang", file, LibraryMessage(path));
  if (report.strings == 0) ++report.problems;
  std::printf("%s: %u lines, %u strings, %u problem%s%s\n", file.c_str(), report.lines,
              report.strings, report.problems, report.problems == 1 ? "" : "s",
              report.strings == 0 ? " (no strings)" : "");
  return report.problems == 0 ? 0 : 1;
}

int Get(std::span<char* const> args) {
  if (args.size() != 2) return UsageError("lang", "get takes a file and a string ID");
  const std::string file = args[0];
  int32_t id = 0;
  if (!ParseId(args[1], id))
    return UsageError("lang", "not a string ID (1 to 2147483646): ", args[1]);
  XString16 path = Utf16NameOf(file);
  MessageBoxScope quiet(DropMessageBox);
  TTextFileStringResource table;
  const bool clean = table.LoadTextFile(path);
  if (path.IsError()) return Fail("lang", file, LibraryMessage(path));
  const TResourceStringItem* item = table._GetResourceString(id);
  if (item == nullptr) {
    XError error;
    error.SetErrorCode(kErrNotFound);
    return Fail("lang", file, "ID " + std::to_string(id) + ": " + LibraryMessage(error));
  }
  if (!clean)
    std::fprintf(stderr, "tavi lang: %s: warning: some lines were refused (see tavi lang check)\n",
                 file.c_str());
  const std::string text = Utf8Of(item->Text(), item->Size / 2) + "\n";
  std::fwrite(text.data(), 1, text.size(), stdout);
  return 0;
}

}  // namespace

int RunLang(std::span<char* const> args) {
  if (args.empty()) return UsageError("lang", "missing subcommand: check or get");
  const std::string_view what = args[0];
  if (AsksForHelp(args)) {
    std::fputs(kLangHelp, stdout);
    return 0;
  }
  if (what == "check") return Check(args.subspan(1));
  if (what == "get") return Get(args.subspan(1));
  return UsageError("lang", "unknown subcommand ", what);
}

}  // namespace tavi::cli
