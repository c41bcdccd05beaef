//===- cmd_hash.cpp - tavi hash: digests of files and checking them --------===//
//
// Prints one "digest  name" line per file with the CRC-32, the 256-bit or the
// 224-bit hash of the library, and with --check reads such lines back and
// verifies each named file. The data streams through the library's filters.
//
//===----------------------------------------------------------------------===//
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"
#include "tavi/tavi.h"
#include "unicode_text.h"

namespace tavi::cli {

namespace {

constexpr const char* kHashHelp =
    "usage: tavi hash [--crc32|--hash256|--hash224] FILE...\n"
    "       tavi hash [--crc32|--hash256|--hash224] --check LIST\n"
    "\n"
    "Prints \"DIGEST  NAME\" for each file (\"-\" is standard input). The digest is\n"
    "the library's 256-bit hash unless --crc32 or --hash224 is given; the CRC-32\n"
    "is printed most significant byte first.\n"
    "\n"
    "--check reads such lines from LIST (\"-\" is standard input), hashes each named\n"
    "file again and prints \"NAME: OK\" or \"NAME: FAILED\". Without a digest option\n"
    "the kind of each line follows from its length (8, 56 or 64 hex digits).\n"
    "Exit status: 0 when all lines check, 1 when any fails, 2 on a usage error.\n";

enum class Kind { kNone, kCrc32, kHash256, kHash224 };

size_t HexDigits(Kind kind) {
  switch (kind) {
    case Kind::kCrc32:
      return 8;
    case Kind::kHash224:
      return 56;
    default:
      return 64;
  }
}

// Accepts every byte and keeps the last write: the digest trailer ends up there.
class TrailerSink : public XIO {
 public:
  bool _Write(const void* data, uint32_t bytes) override {
    const auto* p = static_cast<const uint8_t*>(data);
    last_.assign(p, p + bytes);
    return true;
  }
  const std::vector<uint8_t>& last() const { return last_; }

 private:
  std::vector<uint8_t> last_;
};

std::string Hex(const std::vector<uint8_t>& bytes, bool reversed) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string out;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const uint8_t b = bytes[reversed ? bytes.size() - 1 - i : i];
    out += kDigits[b >> 4];
    out += kDigits[b & 15];
  }
  return out;
}

// Digest hashes the file (or standard input for "-") and gives the digest in hex;
// on failure false with the library's message in problem.
bool Digest(const std::string& path, Kind kind, std::string& digest, std::string& problem) {
  XFile file;
  const bool from_stdin = path == "-";
  if (!from_stdin) {
    XString16 name = Utf16NameOf(path);
    if (!file.Open(name, kFileRead | kFileOpenExisting | kFileShareRead, nullptr)) {
      problem = LibraryMessage(name);
      return false;
    }
  }
  TrailerSink sink;
  XCRC32IO crc(&sink);
  XSHA256IO hash(&sink);
  XIO& filter = kind == Kind::kCrc32 ? static_cast<XIO&>(crc) : static_cast<XIO&>(hash);
  crc.Init();
  if (kind == Kind::kHash224)
    hash.Init224();
  else
    hash.Init256();
  std::vector<char> chunk(1 << 16);
  for (;;) {
    uint32_t got;
    if (from_stdin) {
      got = static_cast<uint32_t>(std::fread(chunk.data(), 1, chunk.size(), stdin));
      if (got == 0 && std::ferror(stdin)) {
        XError error;
        error.SetErrno();
        problem = LibraryMessage(error);
        return false;
      }
    } else {
      got = file._Read(chunk.data(), static_cast<uint32_t>(chunk.size()));
      if (got == 0 && !file.IsOk()) {
        problem = LibraryMessage(file);
        return false;
      }
    }
    if (got == 0) break;
    if (!filter._Write(chunk.data(), got)) {
      problem = LibraryMessage(filter);
      return false;
    }
  }
  bool ok;
  switch (kind) {
    case Kind::kCrc32:
      ok = crc._WriteCRC();
      break;
    case Kind::kHash224:
      ok = hash._WriteSHA224();
      break;
    default:
      ok = hash._WriteSHA256();
      break;
  }
  if (!ok) {
    problem = LibraryMessage(filter);
    return false;
  }
  // The CRC trailer is little-endian; people write CRC-32 values the other way round.
  digest = Hex(sink.last(), kind == Kind::kCrc32);
  return true;
}

Kind KindOfLength(size_t digits) {
  switch (digits) {
    case 8:
      return Kind::kCrc32;
    case 56:
      return Kind::kHash224;
    case 64:
      return Kind::kHash256;
    default:
      return Kind::kNone;
  }
}

// ParseLine splits "DIGEST  NAME" (or "DIGEST *NAME") into its digest, lower-cased,
// and its name; false for anything else.
bool ParseLine(std::string_view line, std::string& digest, std::string& name) {
  const size_t space = line.find(' ');
  if (space == std::string_view::npos || space == 0 || space + 2 > line.size()) return false;
  const char mode = line[space + 1];
  if (mode != ' ' && mode != '*') return false;
  digest.clear();
  for (char c : line.substr(0, space)) {
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
    if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return false;
    digest += c;
  }
  name = line.substr(space + 2);
  return !name.empty();
}

int Check(const std::string& list_path, Kind kind) {
  std::FILE* list = list_path == "-" ? stdin : std::fopen(list_path.c_str(), "rb");
  if (list == nullptr) {
    XError error;
    error.SetErrno();
    std::fprintf(stderr, "tavi hash: %s: %s\n", list_path.c_str(), LibraryMessage(error).c_str());
    return 1;
  }
  std::string text;
  char chunk[4096];
  for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, list)) > 0;) text.append(chunk, n);
  const bool read_failed = std::ferror(list) != 0;
  if (list != stdin) std::fclose(list);
  if (read_failed) {
    std::fprintf(stderr, "tavi hash: %s: cannot read the list\n", list_path.c_str());
    return 1;
  }

  size_t lines = 0, failed = 0, line_number = 0;
  for (size_t begin = 0; begin < text.size();) {
    size_t end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    std::string_view line(text.data() + begin, end - begin);
    begin = end + 1;
    ++line_number;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty()) continue;
    ++lines;
    std::string expected, name;
    Kind line_kind = Kind::kNone;
    if (ParseLine(line, expected, name)) {
      line_kind = kind != Kind::kNone ? kind : KindOfLength(expected.size());
      if (line_kind != Kind::kNone && expected.size() != HexDigits(line_kind))
        line_kind = Kind::kNone;
    }
    if (line_kind == Kind::kNone) {
      std::printf("%s:%zu: FAILED (not a digest line of this kind)\n", list_path.c_str(),
                  line_number);
      ++failed;
      continue;
    }
    std::string actual, problem;
    if (!Digest(name, line_kind, actual, problem)) {
      std::printf("%s: FAILED (%s)\n", name.c_str(), problem.c_str());
      ++failed;
    } else if (actual != expected) {
      std::printf("%s: FAILED\n", name.c_str());
      ++failed;
    } else {
      std::printf("%s: OK\n", name.c_str());
    }
  }
  std::fflush(stdout);
  if (lines == 0) {
    std::fprintf(stderr, "tavi hash: %s: no digest lines\n", list_path.c_str());
    return 1;
  }
  if (failed != 0) {
    std::fprintf(stderr, "tavi hash: %zu of %zu lines failed\n", failed, lines);
    return 1;
  }
  return 0;
}

}  // namespace

int RunHash(std::span<char* const> args) {
  Kind kind = Kind::kNone;
  const char* check = nullptr;
  std::vector<std::string> files;
  bool options_done = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (options_done || arg == "-" || !arg.starts_with("-")) {
      files.emplace_back(arg);
    } else if (arg == "--") {
      options_done = true;
    } else if (arg == "--help" || arg == "-h") {
      std::fputs(kHashHelp, stdout);
      return 0;
    } else if (arg == "--crc32" || arg == "--hash256" || arg == "--hash224") {
      const Kind chosen = arg == "--crc32"     ? Kind::kCrc32
                          : arg == "--hash256" ? Kind::kHash256
                                               : Kind::kHash224;
      if (kind != Kind::kNone && kind != chosen) {
        std::fprintf(stderr, "tavi hash: choose one of --crc32, --hash256, --hash224\n");
        return 2;
      }
      kind = chosen;
    } else if (arg == "--check" || arg == "-c") {
      if (i + 1 == args.size()) {
        std::fprintf(stderr, "tavi hash: --check needs a list (try 'tavi hash --help')\n");
        return 2;
      }
      check = args[++i];
    } else {
      std::fprintf(stderr, "tavi hash: unknown option '%s' (try 'tavi hash --help')\n", args[i]);
      return 2;
    }
  }
  if (check != nullptr) {
    if (!files.empty()) {
      std::fprintf(stderr, "tavi hash: --check takes the list only, no further files\n");
      return 2;
    }
    return Check(check, kind);
  }
  if (files.empty()) {
    std::fprintf(stderr, "usage: tavi hash [--crc32|--hash256|--hash224] FILE...\n");
    return 2;
  }
  if (kind == Kind::kNone) kind = Kind::kHash256;
  int status = 0;
  for (const std::string& path : files) {
    std::string digest, problem;
    if (Digest(path, kind, digest, problem)) {
      std::printf("%s  %s\n", digest.c_str(), path.c_str());
    } else {
      std::fflush(stdout);
      std::fprintf(stderr, "tavi hash: %s: %s\n", path.c_str(), problem.c_str());
      status = 1;
    }
  }
  return status;
}

}  // namespace tavi::cli
