//===- cmd_options.cpp - tavi options: read a value from an option file ------===//
//
// Loads an option file with XOptionFile and reads one key with the typed reader the
// caller names. The option error the library would show in a message box is caught
// and printed as the failure's one line.
//
//===----------------------------------------------------------------------===//
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include "cli_support.h"
#include "command.h"
#include "tavi/tavi.h"
#include "unicode_text.h"

namespace tavi::cli {

namespace {

constexpr const char* kOptionsHelp =
    "usage: tavi options get FILE KEY [--as TYPE]\n"
    "\n"
    "Loads FILE as an option file and prints the value of the first line that\n"
    "begins with KEY (the key includes its separator, as in \"Width=\").\n"
    "TYPE says how the value is read:\n"
    "  raw       the rest of the line as it stands (default)\n"
    "  text      a text value: quoted, or up to the first space\n"
    "  unsigned  an unsigned 32-bit number\n"
    "  u16       an unsigned number below 65536\n"
    "  bool      0 or 1, printed as false or true\n"
    "  double    a number with '.' as decimal point\n"
    "A value that does not read prints the library's option error. Exit status 0\n"
    "when the value was printed, 1 when the file or key is missing or the value\n"
    "is malformed, 2 on a usage error.\n";

enum class Type { kRaw, kText, kUnsigned, kU16, kBool, kDouble };

struct TypeName {
  std::string_view name;
  Type type;
};

constexpr TypeName kTypes[] = {
    {"raw", Type::kRaw}, {"text", Type::kText}, {"unsigned", Type::kUnsigned},
    {"u16", Type::kU16}, {"bool", Type::kBool}, {"double", Type::kDouble},
};

// The text of the last error box shown while CaptureBox answers the boxes. Information
// boxes (the missing-file notice) are dropped: the load's own error says the same.
std::u16string g_error_box;

int32_t CaptureBox(XWindow, const char16_t* text, const char16_t*, uint32_t style) {
  if ((style & 0xF0) == kMbIconError) g_error_box = text != nullptr ? text : u"";
  return kIdOk;
}

// OneLine joins the option error's lines with spaces. The "File:" part is left
// out: the file already leads the program's message.
std::string OneLine(const std::u16string& box) {
  std::string out;
  size_t start = 0;
  while (start <= box.size()) {
    size_t end = box.find(u'\n', start);
    if (end == std::u16string::npos) end = box.size();
    const std::u16string_view line(box.data() + start, end - start);
    if (!line.empty() && !line.starts_with(u"File: ")) {
      if (!out.empty()) out += ' ';
      out += Utf8Of(line.data(), line.size());
    }
    start = end + 1;
  }
  return out;
}

std::string TextOf(const TTitleTextBase& text) {
  return text.text != nullptr ? Utf8Of(text.text, text.size / 2) : std::string();
}

void PrintLine(const std::string& text) {
  const std::string line = text + "\n";
  std::fwrite(line.data(), 1, line.size(), stdout);
}

// Read reads key with the reader of type and prints the value; false when nothing
// was printed (the key is missing or the value did not read).
bool Read(XOptionFile& options, const XString16& key, Type type) {
  const char16_t* k = key.c_str();
  const uint32_t bytes = key.GetBufferPos();
  switch (type) {
    case Type::kRaw: {
      const TTitleText* line = options.IsOption(k, bytes);
      if (line == nullptr) return false;
      PrintLine(Utf8Of(line->text + bytes / 2, (line->size - bytes) / 2));
      return true;
    }
    case Type::kText: {
      TTitleText value;
      if (options.InputOption(value, k, bytes) == nullptr) return false;
      PrintLine(TextOf(value));
      return true;
    }
    case Type::kUnsigned: {
      uint32_t value = 0;
      if (options.InputOption(value, k, bytes) == nullptr) return false;
      PrintLine(std::to_string(value));
      return true;
    }
    case Type::kU16: {
      uint16_t value = 0;
      if (options.InputOption(value, k, bytes) == nullptr) return false;
      PrintLine(std::to_string(value));
      return true;
    }
    case Type::kBool: {
      bool value = false;
      if (options.InputOption(value, k, bytes) == nullptr) return false;
      PrintLine(value ? "true" : "false");
      return true;
    }
    case Type::kDouble: {
      double value = 0;
      if (options.InputOption(value, k, bytes) == nullptr) return false;
      char digits[32];
      const auto result = std::to_chars(digits, digits + sizeof digits, value);
      PrintLine(std::string(digits, result.ptr));
      return true;
    }
  }
  return false;
}

int Get(std::span<char* const> args) {
  std::string file, key_text;
  int positional = 0;
  Type type = Type::kRaw;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (arg == "--as") {
      if (i + 1 == args.size()) return UsageError("options", "missing value after --as");
      const std::string_view name = args[++i];
      bool known = false;
      for (const TypeName& t : kTypes) {
        if (t.name == name) {
          type = t.type;
          known = true;
        }
      }
      if (!known) return UsageError("options", "unknown value type ", name);
    } else if (arg.starts_with("--")) {
      return UsageError("options", "unknown option ", arg);
    } else if (positional == 0) {
      file = arg;
      ++positional;
    } else if (positional == 1) {
      key_text = arg;
      ++positional;
    } else {
      return UsageError("options", "get takes a file and a key");
    }
  }
  if (positional != 2) return UsageError("options", "get takes a file and a key");
  if (key_text.empty()) return UsageError("options", "the key is empty");

  XString16 name = Utf16NameOf(file);
  const XString16 key = Utf16NameOf(key_text);
  g_error_box.clear();
  MessageBoxScope capture(CaptureBox);
  XOptionFile options;
  if (options.LoadFile(name, nullptr) == 0) return Fail("options", file, LibraryMessage(name));
  if (Read(options, key, type)) return 0;
  if (!g_error_box.empty()) return Fail("options", file, OneLine(g_error_box));
  XError error;
  error.SetErrorCode(kErrNotFound);
  return Fail("options", file, key_text + ": " + LibraryMessage(error));
}

}  // namespace

int RunOptions(std::span<char* const> args) {
  if (args.empty()) return UsageError("options", "missing subcommand: get");
  const std::string_view what = args[0];
  if (AsksForHelp(args)) {
    std::fputs(kOptionsHelp, stdout);
    return 0;
  }
  if (what == "get") return Get(args.subspan(1));
  return UsageError("options", "unknown subcommand ", what);
}

}  // namespace tavi::cli
