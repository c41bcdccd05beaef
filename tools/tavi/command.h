//===- command.h - Subcommands of the tavi program -------------*- C++ -*-===//
#pragma once

#include <span>
#include <string_view>

namespace tavi::cli {

// A subcommand: its name, a one-line summary, its usage line and its entry point,
// which gets the arguments after the subcommand's name and returns the exit code.
struct Command {
  std::string_view name;
  std::string_view summary;
  std::string_view usage;
  int (*run)(std::span<char* const> args);
};

// Every subcommand the program has, in the order help lists them.
std::span<const Command> Commands();

int RunErrors(std::span<char* const> args);
int RunHash(std::span<char* const> args);
int RunHelp(std::span<char* const> args);
int RunInfo(std::span<char* const> args);
int RunLang(std::span<char* const> args);
int RunOptions(std::span<char* const> args);
int RunPack(std::span<char* const> args);
int RunUnpack(std::span<char* const> args);
int RunVersion(std::span<char* const> args);
int RunText(std::span<char* const> args);

}  // namespace tavi::cli
