//===- cmd_errors.cpp - tavi errors: the library's error messages ----------===//
//
// Prints the message the library gives for each of its error codes, or for the
// codes named on the command line ("0x20000004", "2", "errno:2", "user:7").
//
//===----------------------------------------------------------------------===//
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "command.h"
#include "tavi/tavi.h"
#include "unicode_text.h"

namespace tavi::cli {

namespace {

void Print(uint32_t code, int32_t source) {
  XError error;
  error.SetError(code, source);
  XString16 message;
  message.EmptyString();
  error.AddErrorMessage(message);
  static constexpr const char* kSources[] = {"", "platform ", "errno ", "user "};
  const char* name = source >= 0 && source < 4 ? kSources[source] : "";
  std::printf("%s0x%08X  %s\n", name, code, Utf8Of(message).c_str());
}

bool Parse(std::string_view arg, uint32_t& code, int32_t& source) {
  source = kErrSourcePlain;
  for (auto [prefix, s] : {std::pair<std::string_view, int32_t>{"platform:", kErrSourcePlatform},
                           {"errno:", kErrSourceErrno},
                           {"user:", kErrSourceUser}}) {
    if (arg.starts_with(prefix)) {
      arg.remove_prefix(prefix.size());
      source = s;
    }
  }
  std::string text(arg);
  char* end = nullptr;
  const unsigned long value = std::strtoul(text.c_str(), &end, 0);
  if (text.empty() || *end != 0 || value > 0xFFFFFFFFul) return false;
  code = static_cast<uint32_t>(value);
  return true;
}

}  // namespace

int RunErrors(std::span<char* const> args) {
  if (args.size() == 1 &&
      (std::string_view(args[0]) == "--help" || std::string_view(args[0]) == "-h")) {
    std::printf(
        "usage: tavi errors [CODE...]\n\nPrints the library's message for each code "
        "(\"0x20000004\",\n"
        "\"2\", \"platform:5\", \"errno:2\", \"user:7\"), or for all of the library's own "
        "codes.\n");
    return 0;
  }
  if (args.empty()) {
    for (uint32_t code = 0x20000001; code <= 0x2000001A; ++code) Print(code, kErrSourcePlain);
    return 0;
  }
  int status = 0;
  for (const char* arg : args) {
    uint32_t code;
    int32_t source;
    if (!Parse(arg, code, source)) {
      std::fprintf(stderr, "tavi errors: '%s' is not an error code\n", arg);
      status = 2;
      continue;
    }
    Print(code, source);
  }
  return status;
}

}  // namespace tavi::cli
