//===- cmd_pack.cpp - tavi pack, tavi unpack and tavi info ----------------===//
//
// pack cuts its input into blocks, packs them in parallel with the library's
// packed container and writes them in order after the common file header; unpack
// checks and restores them; info describes any file that opens with the common
// file header.
//
//===----------------------------------------------------------------------===//
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "cli_support.h"
#include "command.h"
#include "pack_format.h"
#include "tavi/tavi.h"

namespace tavi::cli {

namespace {

constexpr const char* kPackHelp =
    "usage: tavi pack [options] INPUT [-o OUTPUT]\n"
    "\n"
    "Packs INPUT ('-' for standard input) into OUTPUT (default INPUT.tavi, or standard\n"
    "output for standard input).\n"
    "\n"
    "  --method M          auto (default), store, lz or huffman\n"
    "  --no-crc            leave out the CRC-32 of each block\n"
    "  --no-hash           leave out the 256-bit hash of each block\n"
    "  --aes               encipher with AES-256 keyed by the password\n"
    "  --xor               encipher with the XOR cipher keyed by the password\n"
    "  --password-file F   read the password from the first line of F (else\n"
    "                      TAVI_PASSWORD, else a prompt on the terminal)\n"
    "  --block-size N      block size in bytes, K or M suffix (4K to 64M, default 1M)\n"
    "  -o OUTPUT           where to write ('-' for standard output)\n"
    "  --force             replace an existing OUTPUT\n";

constexpr const char* kUnpackHelp =
    "usage: tavi unpack INPUT [-o OUTPUT] [--force] [--password-file F]\n"
    "\n"
    "Restores a file made by tavi pack. OUTPUT defaults to INPUT without its .tavi\n"
    "ending ('-' is standard output). Every block's trailers are checked, and the\n"
    "output appears only when all of them passed.\n"
    "\n"
    "  -o OUTPUT           where to write\n"
    "  --force             replace an existing OUTPUT\n"
    "  --password-file F   read the password from the first line of F (else\n"
    "                      TAVI_PASSWORD, else a prompt on the terminal)\n";

constexpr const char* kInfoHelp =
    "usage: tavi info FILE\n"
    "\n"
    "Describes a file that opens with the library's common file header: identifier,\n"
    "version, flags and, for packed bodies, method, sizes and ratio. No password is\n"
    "needed.\n";

// Blocks in flight per worker: one being packed and one waiting to be written.
constexpr uint32_t kBlocksPerWorker = 2;

bool ParseBlockSize(const char* text, uint32_t& size) {
  char* end = nullptr;
  errno = 0;
  unsigned long long value = std::strtoull(text, &end, 10);
  if (end == text || errno != 0) return false;
  if (*end == 'K' || *end == 'k') {
    value <<= 10;
    ++end;
  } else if (*end == 'M' || *end == 'm') {
    value <<= 20;
    ++end;
  }
  if (*end != 0 || value < kMinBlockSize || value > kMaxBlockSize) return false;
  size = static_cast<uint32_t>(value);
  return true;
}

size_t ReadFull(std::FILE* file, uint8_t* data, size_t bytes) {
  size_t got = 0;
  while (got < bytes) {
    const size_t n = std::fread(data + got, 1, bytes - got, file);
    if (n == 0) break;
    got += n;
  }
  return got;
}

std::string PercentText(uint64_t part, uint64_t whole) {
  XString16 text;
  text.EmptyString();
  if (whole == 0 || !XWriteSizePercents(text, part, whole, u'.')) return "-";
  std::string out;
  for (uint32_t i = 0; i < text.GetBufferPos() / 2; ++i) out += static_cast<char>(text[i]);
  return out + "%";
}

struct PackJob {
  std::vector<uint8_t> raw;
  std::vector<uint8_t> packed;
  XError error;
  bool ok = false;
};

struct PackContext {
  const PackRecord* record;
  const char16_t* password;
};

void PackOne(void* item, void* context) {
  auto& job = *static_cast<PackJob*>(item);
  const auto& ctx = *static_cast<PackContext*>(context);
  job.ok = PackBlock(job.raw.data(), static_cast<uint32_t>(job.raw.size()), *ctx.record,
                     ctx.password, job.packed, job.error);
}

struct UnpackJob {
  Frame frame;
  std::vector<uint8_t> raw;
  XError error;
  bool ok = false;
};

void UnpackOne(void* item, void* context) {
  auto& job = *static_cast<UnpackJob*>(item);
  const auto& ctx = *static_cast<PackContext*>(context);
  job.ok = UnpackBlock(job.frame, *ctx.record, ctx.password, job.raw, job.error);
}

uint32_t BatchSize() {
  return XGetWorkerCount() * kBlocksPerWorker;
}

}  // namespace

int RunPack(std::span<char* const> args) {
  std::string input, output;
  const char* password_file = nullptr;
  PackRecord record;
  record.xpack_flags = kXPackCRC | kXPackHash;
  record.methods = kXPackTryHuffman | kXPackTryLZ;
  bool force = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    const bool has_value = i + 1 < args.size();
    if (arg == "--help" || arg == "-h") {
      std::fputs(kPackHelp, stdout);
      return 0;
    } else if (arg == "--method" && has_value) {
      const std::string_view m = args[++i];
      if (m == "auto") {
        record.methods = kXPackTryHuffman | kXPackTryLZ;
      } else if (m == "store") {
        record.methods = 0;
      } else if (m == "lz") {
        record.methods = kXPackTryLZ;
      } else if (m == "huffman") {
        record.methods = kXPackTryHuffman;
      } else {
        return UsageError("pack", "unknown method '" + std::string(m) + "'");
      }
    } else if (arg == "--no-crc") {
      record.xpack_flags &= ~kXPackCRC;
    } else if (arg == "--no-hash") {
      record.xpack_flags &= ~kXPackHash;
    } else if (arg == "--aes") {
      record.xpack_flags |= kXPackAES;
    } else if (arg == "--xor") {
      record.xpack_flags |= kXPackXOR;
    } else if (arg == "--password-file" && has_value) {
      password_file = args[++i];
    } else if (arg == "--block-size" && has_value) {
      if (!ParseBlockSize(args[++i], record.block_size))
        return UsageError("pack", "block size must be 4K to 64M");
    } else if (arg == "-o" && has_value) {
      output = args[++i];
    } else if (arg == "--force") {
      force = true;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return UsageError("pack", "unknown or incomplete option '" + std::string(arg) + "'");
    } else if (input.empty()) {
      input = arg;
    } else {
      return UsageError("pack", "one INPUT only");
    }
  }
  if (input.empty()) return UsageError("pack", "no INPUT");
  if (record.methods == 0 && record.xpack_flags == 0)
    return UsageError("pack", "--method store with --no-crc and --no-hash leaves nothing to do");
  if (output.empty()) output = input == "-" ? "-" : input + ".tavi";
  const bool ciphered = (record.xpack_flags & (kXPackAES | kXPackXOR)) != 0;

  std::u16string password;
  std::string problem;
  if (ciphered && !GetPassword(password_file, true, password, problem)) {
    Fail("pack", input, problem);
    return 1;
  }
  InputFile in;
  if (!in.Open(input, problem)) {
    Fail("pack", input, problem);
    return 1;
  }
  record.size = in.regular ? in.size : kSizeUnknown;
  record.mtime_sec = in.mtime_sec;
  record.mtime_nsec = in.mtime_nsec;
  ProgressBar bar;  // from here on Ctrl-C cancels
  OutputFile out;
  if (!out.Open(output, force, problem)) {
    Fail("pack", output, problem);
    return 1;
  }

  XFileHeader256 header;
  header.reserved = kPackFormatVersion;
  header.SetForWriting(kPackIdentifier, (record.methods != 0 ? kFileHeaderCompressed : 0) |
                                            (ciphered ? kFileHeaderCrypted : 0));
  uint8_t head[kHeaderSize + kRecordSize];
  EncodeHeader(header, head);
  EncodeRecord(record, head + kHeaderSize);
  bool write_ok = out.Write(head, sizeof head);

  PackContext ctx{&record, ciphered ? password.c_str() : nullptr};
  std::vector<PackJob> jobs(BatchSize());
  bar.Start("packing", in.regular ? in.size : kProgressTotalUnknown);
  uint64_t done = 0;
  bool at_end = false;
  while (write_ok && !at_end) {
    uint32_t count = 0;
    for (; count < jobs.size(); ++count) {
      PackJob& job = jobs[count];
      job.raw.resize(record.block_size);
      job.raw.resize(ReadFull(in.file, job.raw.data(), record.block_size));
      if (job.raw.size() < record.block_size) at_end = true;
      if (job.raw.empty()) break;
      if (at_end) {
        ++count;
        break;
      }
    }
    if (bar.Cancelled()) {
      bar.End(false);
      Fail("pack", input, "cancelled");
      return 1;
    }
    if (std::ferror(in.file)) {
      bar.End(false);
      Fail("pack", input, std::strerror(errno));
      return 1;
    }
    XMakeArrayMT(PackOne, &ctx, jobs.data(), count, sizeof(PackJob));
    for (uint32_t i = 0; i < count && write_ok; ++i) {
      PackJob& job = jobs[i];
      if (!job.ok) {
        bar.End(false);
        Fail("pack", input, ErrorText(job.error));
        return 1;
      }
      uint8_t frame[kFrameSize];
      EncodeFrame(static_cast<uint32_t>(job.raw.size()), static_cast<uint32_t>(job.packed.size()),
                  frame);
      write_ok = out.Write(frame, kFrameSize) && out.Write(job.packed.data(), job.packed.size());
      done += job.raw.size();
    }
    if (!bar.Update(done) || bar.Cancelled()) {
      bar.End(false);
      Fail("pack", input, "cancelled");
      return 1;
    }
  }
  uint8_t end_frame[kFrameSize];
  EncodeFrame(0, 0, end_frame);
  write_ok = write_ok && out.Write(end_frame, kFrameSize);
  bar.End(write_ok);
  if (!write_ok) {
    Fail("pack", output, std::strerror(errno));
    return 1;
  }
  if (in.regular && done != in.size) {
    Fail("pack", input, "the file changed while it was read");
    return 1;
  }
  if (!out.Commit(nullptr, 0, problem)) {
    Fail("pack", output, problem);
    return 1;
  }
  return 0;
}

int RunUnpack(std::span<char* const> args) {
  std::string input, output;
  const char* password_file = nullptr;
  bool force = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    const bool has_value = i + 1 < args.size();
    if (arg == "--help" || arg == "-h") {
      std::fputs(kUnpackHelp, stdout);
      return 0;
    } else if (arg == "-o" && has_value) {
      output = args[++i];
    } else if (arg == "--force") {
      force = true;
    } else if (arg == "--password-file" && has_value) {
      password_file = args[++i];
    } else if (arg.size() > 1 && arg[0] == '-') {
      return UsageError("unpack", "unknown or incomplete option '" + std::string(arg) + "'");
    } else if (input.empty()) {
      input = arg;
    } else {
      return UsageError("unpack", "one INPUT only");
    }
  }
  if (input.empty()) return UsageError("unpack", "no INPUT");
  if (output.empty()) {
    if (input == "-") {
      output = "-";
    } else if (input.size() > 5 && input.ends_with(".tavi")) {
      output = input.substr(0, input.size() - 5);
    } else {
      return UsageError("unpack", "INPUT does not end in .tavi: give -o OUTPUT");
    }
  }

  std::string problem;
  InputFile in;
  if (!in.Open(input, problem)) {
    Fail("unpack", input, problem);
    return 1;
  }
  uint8_t head[kHeaderSize + kRecordSize];
  PackRecord record;
  XError error;
  if (ReadFull(in.file, head, sizeof head) != sizeof head) {
    Fail("unpack", input, "too short for a packed file");
    return 1;
  }
  const XFileHeader256 header = DecodeHeader(head);
  if (!header.IsFor(kPackIdentifier)) {
    Fail("unpack", input, "not a file made by tavi pack");
    return 1;
  }
  if (header.reserved != kPackFormatVersion) {
    Fail("unpack", input,
         "made by a newer version of tavi (format " + std::to_string(header.reserved) + ")");
    return 1;
  }
  if (!DecodeRecord(head + kHeaderSize, record, error)) {
    Fail("unpack", input, ErrorText(error));
    return 1;
  }
  const bool ciphered = (record.xpack_flags & (kXPackAES | kXPackXOR)) != 0;
  std::u16string password;
  if (ciphered && !GetPassword(password_file, false, password, problem)) {
    Fail("unpack", input, problem);
    return 1;
  }
  ProgressBar bar;  // from here on Ctrl-C cancels
  OutputFile out;
  if (!out.Open(output, force, problem)) {
    Fail("unpack", output, problem);
    return 1;
  }

  StdioSource source(in.file);
  BlockReader reader(source, record);
  PackContext ctx{&record, ciphered ? password.c_str() : nullptr};
  std::vector<UnpackJob> jobs(BatchSize());
  bar.Start("unpacking", record.size);
  uint64_t done = 0;
  uint64_t block_number = 0;
  bool at_end = false;
  bool write_ok = true;
  auto fail = [&](const std::string& message) {
    bar.End(false);
    Fail("unpack", input, message);
    return 1;
  };
  while (!at_end) {
    uint32_t count = 0;
    while (count < jobs.size()) {
      const BlockReader::Status status = reader.Next(jobs[count].frame);
      if (status == BlockReader::kBad) {
        if (bar.Cancelled()) return fail("cancelled");
        return fail("damaged or truncated after block " + std::to_string(block_number + count) +
                    ": " + ErrorText(reader.error()));
      }
      if (status == BlockReader::kEnd) {
        at_end = true;
        break;
      }
      ++count;
    }
    XMakeArrayMT(UnpackOne, &ctx, jobs.data(), count, sizeof(UnpackJob));
    for (uint32_t i = 0; i < count; ++i) {
      UnpackJob& job = jobs[i];
      ++block_number;
      if (!job.ok) {
        std::string message = "block " + std::to_string(block_number) + ": " + ErrorText(job.error);
        if (ciphered) message += " (wrong password?)";
        return fail(message);
      }
      if (write_ok) write_ok = out.Write(job.raw.data(), job.raw.size());
      done += job.raw.size();
    }
    if (!write_ok) return fail(output + ": " + std::strerror(errno));
    if (!bar.Update(done) || bar.Cancelled()) return fail("cancelled");
  }
  bar.End(true);
  const bool restore_time = !out.IsStdout();
  if (!out.Commit(restore_time ? &record.mtime_sec : nullptr, record.mtime_nsec, problem)) {
    Fail("unpack", output, problem);
    return 1;
  }
  return 0;
}

namespace {

const char* MethodName(uint32_t method) {
  switch (method) {
    case kXPackStored:
      return "stored";
    case kXPackHuffman:
      return "Huffman";
    case kXPackLZ:
      return "LZ";
    default:
      return "unknown";
  }
}

std::string ContainerFlagWords(uint32_t flags) {
  std::string words;
  auto add = [&](const char* w) {
    if (!words.empty()) words += ", ";
    words += w;
  };
  if (flags & kXPackCRC) add("CRC-32");
  if (flags & kXPackHash) add("hash");
  if (flags & kXPackAES) add("AES-256");
  if (flags & kXPackXOR) add("XOR");
  if (flags & ~kXPackAppliedFlags) add("unknown bits");
  return words.empty() ? "none" : words;
}

std::string HeaderFlagWords(uint32_t flags) {
  std::string words;
  auto add = [&](const char* w) {
    if (!words.empty()) words += ", ";
    words += w;
  };
  if (flags & kFileHeaderCompressed) add("compressed");
  if (flags & kFileHeaderCrypted) add("enciphered");
  if (flags & kFileHeaderUTF8) add("UTF-8 text");
  if (flags & ~uint32_t{7}) add("other bits");
  return words.empty() ? "none (raw body)" : words;
}

// Reads a stream through an XIO, for the container's packed count.
class StdioStream : public XIO {
 public:
  explicit StdioStream(std::FILE* file) : file_(file) {}
  uint32_t _Read(void* data, uint32_t bytes) override {
    return static_cast<uint32_t>(std::fread(data, 1, bytes, file_));
  }

 private:
  std::FILE* file_;
};

// Moves past bytes of a file, or reads them away from a pipe.
bool Skip(std::FILE* f, uint32_t bytes) {
  if (std::fseek(f, static_cast<long>(bytes), SEEK_CUR) == 0) return true;
  uint8_t sink[4096];
  while (bytes > 0) {
    const size_t n = ReadFull(f, sink, std::min<size_t>(bytes, sizeof sink));
    if (n == 0) return false;
    bytes -= static_cast<uint32_t>(n);
  }
  return true;
}

uint32_t Le32(const uint8_t* p) {
  return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

void PrintSizes(uint64_t packed, uint64_t unpacked) {
  std::printf("packed size:   %llu bytes\n", static_cast<unsigned long long>(packed));
  std::printf("unpacked size: %llu bytes\n", static_cast<unsigned long long>(unpacked));
  std::printf("ratio:         %s\n", PercentText(packed, unpacked).c_str());
}

int InfoTaviPack(std::FILE* f, const std::string& name, uint64_t file_size) {
  uint8_t raw[kRecordSize];
  PackRecord record;
  XError error;
  if (ReadFull(f, raw, kRecordSize) != kRecordSize || !DecodeRecord(raw, record, error)) {
    error.SetSafeErrorCode(kErrEndOfData);
    Fail("info", name, "record: " + ErrorText(error));
    return 1;
  }
  char when[64] = "unknown";
  const time_t t = static_cast<time_t>(record.mtime_sec);
  tm parts{};
  if (gmtime_r(&t, &parts) != nullptr)
    std::strftime(when, sizeof when, "%Y-%m-%d %H:%M:%S UTC", &parts);
  std::printf("modified:      %s\n", when);
  std::printf("block size:    %u bytes\n", record.block_size);
  std::printf("block flags:   %s\n", ContainerFlagWords(record.xpack_flags).c_str());
  // Walk the frames; each container's first word names the method it chose.
  uint64_t blocks = 0, unpacked = 0, packed = kHeaderSize + kRecordSize;
  uint64_t by_method[3] = {};
  for (;;) {
    uint8_t frame[kFrameSize + 4];
    if (ReadFull(f, frame, kFrameSize) != kFrameSize) {
      Fail("info", name, "truncated after block " + std::to_string(blocks));
      return 1;
    }
    const uint32_t raw_size = Le32(frame), packed_size = Le32(frame + 4);
    packed += kFrameSize;
    if (raw_size == 0) break;
    if (packed_size < 4 || ReadFull(f, frame + kFrameSize, 4) != 4 || !Skip(f, packed_size - 4)) {
      Fail("info", name, "damaged at block " + std::to_string(blocks + 1));
      return 1;
    }
    const uint32_t method = Le32(frame + kFrameSize);
    if (method < 3) ++by_method[method];
    ++blocks;
    unpacked += raw_size;
    packed += packed_size;
  }
  if (file_size != 0 && packed != file_size) {
    Fail("info", name, "damaged: the frames do not end at the end of the file");
    return 1;
  }
  std::printf(
      "blocks:        %llu (LZ %llu, Huffman %llu, stored %llu)\n",
      static_cast<unsigned long long>(blocks), static_cast<unsigned long long>(by_method[2]),
      static_cast<unsigned long long>(by_method[1]), static_cast<unsigned long long>(by_method[0]));
  PrintSizes(packed, unpacked);
  return 0;
}

int InfoContainer(std::FILE* f, const std::string& name, uint64_t file_size) {
  uint8_t words[8];
  if (ReadFull(f, words, 8) != 8) {
    Fail("info", name, "packed body too short");
    return 1;
  }
  const uint32_t method = Le32(words), flags = Le32(words + 4);
  std::printf("method:        %s\n", MethodName(method));
  std::printf("body flags:    %s\n", ContainerFlagWords(flags).c_str());
  const uint64_t packed = file_size > kHeaderSize ? file_size - kHeaderSize : 0;
  if (flags & (kXPackAES | kXPackXOR)) {
    std::printf("packed size:   %llu bytes\n", static_cast<unsigned long long>(packed));
    std::printf("unpacked size: enciphered (known only with the password)\n");
    return 0;
  }
  StdioStream stream(f);
  uint32_t count = 0;  // a container holds less than 4 GiB
  if (!_ReadPackNumber16(stream, count)) {
    Fail("info", name, "packed body: " + ErrorText(stream));
    return 1;
  }
  PrintSizes(packed, count);
  return 0;
}

}  // namespace

int RunInfo(std::span<char* const> args) {
  if (args.size() == 1 &&
      (std::string_view(args[0]) == "--help" || std::string_view(args[0]) == "-h")) {
    std::fputs(kInfoHelp, stdout);
    return 0;
  }
  if (args.size() != 1) return UsageError("info", "give one FILE");
  const std::string name = args[0];
  std::string problem;
  InputFile in;
  if (!in.Open(name, problem)) {
    Fail("info", name, problem);
    return 1;
  }
  uint8_t raw[kHeaderSize];
  if (ReadFull(in.file, raw, kHeaderSize) != kHeaderSize) {
    Fail("info", name, "shorter than the 32-byte file header");
    return 1;
  }
  const XFileHeader256 header = DecodeHeader(raw);
  if (header.marker != kFileHeaderMarker) {
    Fail("info", name, "does not begin with the common file header");
    return 1;
  }
  const bool ours = header.identifier == kPackIdentifier;
  std::string ident;
  for (int i = 0; i < 4; ++i) {
    const char c = raw[i];
    ident += (c >= 0x20 && c < 0x7F) ? c : '.';
  }
  std::printf("file:          %s\n", name.c_str());
  std::printf("identifier:    0x%08X \"%s\"%s\n", header.identifier, ident.c_str(),
              ours ? " (tavi pack)" : "");
  std::printf("version:       %u\n", header.reserved);
  std::printf("flags:         %s\n", HeaderFlagWords(header.flags).c_str());
  const uint64_t size = in.regular ? in.size : 0;
  if (ours) return InfoTaviPack(in.file, name, size);
  if (header.flags & (kFileHeaderCompressed | kFileHeaderCrypted))
    return InfoContainer(in.file, name, size);
  if (in.regular)
    std::printf("body:          raw, %llu bytes\n",
                static_cast<unsigned long long>(size - kHeaderSize));
  return 0;
}

}  // namespace tavi::cli
