//===- main.cpp - The tavi command-line program ----------------------------===//
//
// Dispatches to the subcommands; without one it prints the version and the list
// of subcommands.
//
//===----------------------------------------------------------------------===//
#include <cstdio>
#include <span>
#include <string_view>

#include "command.h"
#include "tavi/tavi.h"

namespace tavi::cli {

namespace {

constexpr Command kCommands[] = {
    {"errors", "list the library's error codes with their messages", "tavi errors [CODE...]",
     RunErrors},
    {"hash", "print or check the CRC-32 or the 256- or 224-bit hash of files",
     "tavi hash [--crc32|--hash256|--hash224] [--check LIST | FILE...]", RunHash},
    {"help", "list the subcommands", "tavi help", RunHelp},
    {"info", "describe a file that opens with the common file header", "tavi info FILE", RunInfo},
    {"lang", "check a language file or print one of its strings",
     "tavi lang check FILE | tavi lang get FILE ID", RunLang},
    {"options", "print the value of a key from an option file",
     "tavi options get FILE KEY [--as TYPE]", RunOptions},
    {"pack", "pack a file in blocks (compressed, checked, optionally enciphered)",
     "tavi pack [options] INPUT [-o OUTPUT]", RunPack},
    {"unpack", "check and restore a file made by tavi pack", "tavi unpack INPUT [-o OUTPUT]",
     RunUnpack},
    {"version", "print the library version", "tavi version", RunVersion},
    {"text", "detect the format of a text file or convert it to another",
     "tavi text detect FILE | tavi text convert INPUT --to FORMAT [-o OUTPUT]", RunText},
};

}  // namespace

std::span<const Command> Commands() {
  return kCommands;
}

int RunVersion(std::span<char* const>) {
  std::printf("tavi %s\n", XGetVersionString());
  return 0;
}

int RunHelp(std::span<char* const>) {
  std::printf("tavi %s\n\nusage: tavi <command> [arguments]\n\ncommands:\n", XGetVersionString());
  for (const Command& c : Commands()) {
    std::printf("  %-10.*s %.*s\n", static_cast<int>(c.name.size()), c.name.data(),
                static_cast<int>(c.summary.size()), c.summary.data());
  }
  return 0;
}

}  // namespace tavi::cli

int main(int argc, char** argv) {
  using namespace tavi::cli;
  std::span<char* const> args(argv, static_cast<size_t>(argc));
  if (args.size() < 2) return RunHelp({});
  const std::string_view name = args[1];
  for (const Command& c : Commands()) {
    if (c.name == name) return c.run(args.subspan(2));
  }
  std::fprintf(stderr, "tavi: unknown command '%s' (try 'tavi help')\n", argv[1]);
  return 2;
}
