//===- cmd_text.cpp - tavi text: detect and convert text-file formats ------===//
//
// "detect" loads a text file as the library does and names the format it found;
// "convert" loads it into UTF-16 and saves it in another format. Named files go
// through XBuffer::LoadTextFile and SaveTextFile. Standard input and output are
// pipes without a size to load by, so for "-" the program gathers or writes the
// bytes itself and runs the same two conversion steps those members are made of.
//
//===----------------------------------------------------------------------===//
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include "cli_support.h"
#include "command.h"
#include "tavi/tavi.h"
#include "text/internal/text_convert.h"
#include "unicode_text.h"

namespace tavi::cli {

namespace {

constexpr const char* kTextHelp =
    "usage: tavi text detect FILE\n"
    "       tavi text convert INPUT --to FORMAT [--from FORMAT] [-o OUTPUT]\n"
    "\n"
    "detect prints the format of the file's byte-order mark, or, for a file\n"
    "without one, the 8-bit code page it is read in by default.\n"
    "convert reads INPUT in any format the library reads and writes it in FORMAT\n"
    "to OUTPUT (standard output when -o is missing). --from names the format of\n"
    "a file without a byte-order mark (default: the user's 8-bit DOS code page).\n"
    "\"-\" is standard input or output.\n"
    "\n"
    "Formats: utf-8, utf-16le, utf-32le, an 8-bit code page as cp1252, windows-1252,\n"
    "1252, iso-8859-15 or latin1, or a format number of the library. utf-16be and\n"
    "utf-32be are read only. Written Unicode files begin with their byte-order\n"
    "mark; 8-bit files have none, and characters their code page lacks become '?'.\n";

struct FormatName {
  std::string_view name;
  uint16_t format;
};

constexpr FormatName kFormatNames[] = {
    {"utf-8", kTextUtf8},      {"utf8", kTextUtf8},        {"utf-16le", kTextUtf16},
    {"utf16le", kTextUtf16},   {"utf-16", kTextUtf16},     {"utf-16be", kTextUtf16BE},
    {"utf16be", kTextUtf16BE}, {"utf-32le", kTextUtf32},   {"utf32le", kTextUtf32},
    {"utf-32", kTextUtf32},    {"utf-32be", kTextUtf32BE}, {"utf32be", kTextUtf32BE},
    {"latin1", 28591},         {"ascii", 20127},
};

std::string Lower(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

// ParseFormat accepts the names above, "cpNNN", "windows-NNN", "ibmNNN",
// "iso-8859-N" (code page 28590 + N) and plain numbers. 65001 is the platform's
// number of UTF-8 and becomes 1030. 0 when unknown.
uint16_t ParseFormat(std::string_view text) {
  const std::string name = Lower(text);
  for (const FormatName& f : kFormatNames)
    if (f.name == name) return f.format;
  std::string_view digits = name;
  unsigned base = 0;
  if (digits.starts_with("iso-8859-")) {
    digits.remove_prefix(9);
    base = 28590;
  }
  for (std::string_view prefix : {"cp", "windows-", "ibm"}) {
    if (digits.starts_with(prefix)) {
      digits.remove_prefix(prefix.size());
      break;
    }
  }
  unsigned value = 0;
  const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (digits.empty() || ec != std::errc() || end != digits.data() + digits.size() || value == 0 ||
      value > 0xFFFF - base)
    return 0;
  value += base;
  return value == kTextUtf8CodePage ? kTextUtf8 : static_cast<uint16_t>(value);
}

std::string FormatLabel(uint16_t format) {
  switch (format) {
    case kTextUtf8:
    case kTextUtf8CodePage:
      return "utf-8";
    case kTextUtf16:
      return "utf-16le";
    case kTextUtf16BE:
      return "utf-16be";
    case kTextUtf32:
      return "utf-32le";
    case kTextUtf32BE:
      return "utf-32be";
    default:
      return "cp" + std::to_string(format);
  }
}

// Convertible tells whether the library can convert the 8-bit code page; the Unicode
// formats need none.
bool Convertible(uint16_t format) {
  char16_t lut[256];
  return XIsUnicodeTextFormat(format) || XSetChar16LUT(format, lut);
}

// Writes every byte to standard output.
class StdoutSink : public XIO {
 public:
  bool _Write(const void* data, uint32_t bytes) override {
    if (std::fwrite(data, 1, bytes, stdout) == bytes) return true;
    SetErrno();
    return false;
  }
  bool _Flush() override {
    if (std::fflush(stdout) == 0) return true;
    SetErrno();
    return false;
  }
};

// ReadAll gathers standard input in raw; false with the library's message in problem.
bool ReadAll(std::FILE* in, XBuffer& raw, std::string& problem) {
  char chunk[1 << 14];
  for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, in)) > 0;) {
    if (!raw._Write(chunk, static_cast<uint32_t>(n))) {
      problem = LibraryMessage(raw);
      return false;
    }
  }
  if (!std::ferror(in)) return true;
  XError error;
  error.SetErrno();
  problem = LibraryMessage(error);
  return false;
}

// Load reads the text of path into text in buffer_format and returns the format
// found, or 0 with the library's message in problem. For "-" the bytes come from
// stdin_bytes, which the caller gathered with ReadAll; they are copied, not used up.
uint16_t Load(const std::string& path, const XBuffer& stdin_bytes, uint16_t source_format,
              uint16_t buffer_format, XBuffer& text, std::string& problem) {
  if (path != "-") {
    XString16 name = Utf16NameOf(path);
    const uint16_t found = text.LoadTextFile(name, source_format, buffer_format,
                                             kFileRead | kFileOpenExisting | kFileShareRead);
    if (found == 0) problem = LibraryMessage(name);
    return found;
  }
  text.SetBufferPos(0);
  if (!text._Write(stdin_bytes._GetBufferAt(0), stdin_bytes.GetBufferPos())) {
    problem = LibraryMessage(text);
    return 0;
  }
  XError report;
  const uint16_t found =
      text_internal::ConvertLoadedText(text, source_format, buffer_format, report);
  if (found == 0) problem = LibraryMessage(report);
  return found;
}

// Save writes the UTF-16 text to path ("-": standard output) in format.
bool Save(const std::string& path, uint16_t format, XBuffer& text, std::string& problem) {
  if (path != "-") {
    XString16 name = Utf16NameOf(path);
    if (text.SaveTextFile(name, format, kTextUtf16, kFileWrite | kFileCreateAlways, nullptr))
      return true;
    problem = LibraryMessage(name);
    return false;
  }
  StdoutSink out;
  if (text_internal::WriteText(out, text._GetBufferAt(0), text.GetBufferPos(), format,
                               kTextUtf16) &&
      out._Flush())
    return true;
  problem = LibraryMessage(out);
  return false;
}

int Detect(std::span<char* const> args) {
  if (args.size() != 1) return UsageError("text", "detect takes one file");
  const std::string path = args[0];
  XBuffer raw, text;
  std::string problem;
  if (path == "-" && !ReadAll(stdin, raw, problem)) return Fail("text", path, problem);
  // With no source format given, a file without a mark is read in the default 8-bit
  // code page, so an 8-bit result means that no mark was found. Loading into UTF-16
  // also checks that the text is well formed.
  uint16_t found = Load(path, raw, 0, kTextUtf16, text, problem);
  if (found == 0) return Fail("text", path, problem);
  // Big-endian text loaded into UTF-16 reports its little-endian twin; it keeps its
  // own format only when the buffer asks for that format, which other text refuses.
  if (found == kTextUtf16 || found == kTextUtf32) {
    const uint16_t twin = found == kTextUtf16 ? kTextUtf16BE : kTextUtf32BE;
    if (Load(path, raw, 0, twin, text, problem) == twin) found = twin;
  }
  if (XIsUnicodeTextFormat(found))
    std::printf("%s\n", FormatLabel(found).c_str());
  else
    std::printf("%s (no byte-order mark)\n", FormatLabel(found).c_str());
  return 0;
}

int Convert(std::span<char* const> args) {
  std::string input, output = "-";
  uint16_t target = 0, source = 0;
  bool have_input = false, have_target = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (arg == "--to" || arg == "--from" || arg == "-o") {
      if (i + 1 == args.size()) return UsageError("text", "missing value after ", arg);
      const std::string_view value = args[++i];
      if (arg == "-o") {
        output = value;
        continue;
      }
      const uint16_t format = ParseFormat(value);
      if (format == 0 || !Convertible(format))
        return UsageError("text", "unknown text format ", value);
      if (arg == "--to") {
        if (format == kTextUtf16BE || format == kTextUtf32BE)
          return UsageError("text", "this format can be read but not written: ", value);
        target = format;
        have_target = true;
      } else {
        source = format;
      }
    } else if (arg != "-" && arg.starts_with("-")) {
      return UsageError("text", "unknown option ", arg);
    } else if (have_input) {
      return UsageError("text", "convert takes one input file");
    } else {
      input = arg;
      have_input = true;
    }
  }
  if (!have_input) return UsageError("text", "convert needs an input file");
  if (!have_target) return UsageError("text", "convert needs --to FORMAT");

  XBuffer raw, text;
  std::string problem;
  if (input == "-" && !ReadAll(stdin, raw, problem)) return Fail("text", input, problem);
  if (Load(input, raw, source, kTextUtf16, text, problem) == 0) return Fail("text", input, problem);
  if (!Save(output, target, text, problem)) return Fail("text", output, problem);
  return 0;
}

}  // namespace

int RunText(std::span<char* const> args) {
  if (args.empty()) return UsageError("text", "missing subcommand: detect or convert");
  const std::string_view what = args[0];
  if (AsksForHelp(args)) {
    std::fputs(kTextHelp, stdout);
    return 0;
  }
  if (what == "detect") return Detect(args.subspan(1));
  if (what == "convert") return Convert(args.subspan(1));
  return UsageError("text", "unknown subcommand ", what);
}

}  // namespace tavi::cli
