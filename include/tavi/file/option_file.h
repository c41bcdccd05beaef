//===- option_file.h - Settings kept as a sorted text file of lines -*- C++ -*-===//
//
// This file defines XOptionFile, a string collection loaded from a text file of
// option lines and read by key prefix with typed, locale-independent parsers.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/coll/string_coll.h"
#include "tavi/core/types.h"
#include "tavi/export.h"

namespace tavi {

class TTitleText;
class XString16;

// Library strings of the missing-file message: 500000351 + name + 500000352.
inline constexpr int32_t kStrOptionFileMissingBefore = 500000351;
inline constexpr int32_t kStrOptionFileMissingAfter = 500000352;

// XOptionFile holds the lines of an option file, sorted with CompareTitleText. A line
// is a key (the application's own text, "Width=" for instance) directly followed by
// its value; there are no comments or escapes. Lookups match the key as a prefix of
// a line, so no key may be the prefix of another key's line. Key lengths are in bytes.
//
// The typed InputOption forms return the line read, or null: silently when no line
// has the key (the caller keeps its default), and after showing the option error
// (ErrorMessage) when the value does not parse: 0x20000007 for a number, 0x20000008
// for a text or a boolean other than 0 / 1, 0x20000013 for a 16-bit value above
// 65535. The value is written only on success.
//
// LoadFile, SaveFile and SaveFileMsg here take an owner window and the option text;
// they hide XObject's persistence forms on purpose (reach those through XObject&).
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Woverloaded-virtual"
#endif
class TAVI_API XOptionFile : public TStringColl {
 public:
  XOptionFile() = default;
  XOptionFile(const XOptionFile&) = delete;
  XOptionFile& operator=(const XOptionFile&) = delete;
  // The lines belong to the option file and are freed with it.
  ~XOptionFile() override;

  // IsOption returns the first line that begins with the key, or null.
  TTitleText* IsOption(const char16_t* key, uint32_t keyByteLength) const;

  // ErrorMessage shows "Option error: <message of code>\nLine: <line>" and, when a
  // file was loaded, "\n\nFile: <name>" in an error box owned by the load's window;
  // returns the box's answer.
  virtual int32_t ErrorMessage(const TTitleText* line, uint32_t code);
  // LoadFile appends the lines of the text file name (UTF-8, UTF-16 or UTF-32 by
  // byte-order mark, else the user's OEM code page) and sorts them; returns the
  // format found, or 0 with the error in name. A missing file is also shown as an
  // information message (strings 500000351, name, 500000352). name must outlive the
  // later error messages, which show it.
  virtual uint16_t LoadFile(XString16& name, XWindow owner);
  // LoadUserFile loads fileName from the user's configuration folder
  // ($XDG_CONFIG_HOME or ~/.config), putting the full name in path; a folder or name
  // that cannot be had is shown (path's error message) and gives 0.
  virtual uint16_t LoadUserFile(XString16& path, const char16_t* fileName, uint32_t byteLength,
                                XWindow owner);
  // Numbers through the portable parsers (decimal point "."; unsigned decimal).
  virtual TTitleText* InputOption(double& value, const char16_t* key, uint32_t keyByteLength);
  virtual TTitleText* InputOption(bool& value, const char16_t* key, uint32_t keyByteLength);
  virtual TTitleText* InputOption(uint16_t& value, const char16_t* key, uint32_t keyByteLength);
  virtual TTitleText* InputOption(uint32_t& value, const char16_t* key, uint32_t keyByteLength);
  // A text value: a quoted value or a run up to the first space (portable text
  // options); value owns a copy.
  virtual TTitleText* InputOption(TTitleText& value, const char16_t* key, uint32_t keyByteLength);
  // InputOptionDir makes the folder of the key's value the content of directory,
  // creating it when create is set and it is missing. False when the key is missing
  // (nothing shown), the value is not a text or empty (0x20000008, shown), or the
  // folder cannot be made (shown with directory's error). The value is taken as it is:
  // no divider is added.
  virtual bool InputOptionDir(XString16& directory, bool create, const char16_t* key,
                              uint32_t keyByteLength);
  // SaveFile writes text (the application's complete option text, one option per
  // line) to name in the user's 8-bit code page, keeping the previous file as
  // "<name>.bck". The collection is not consulted. False with the error in name.
  virtual bool SaveFile(XString16& name, XString16& text);
  // SaveUserFile saves under the user's configuration folder (full name in path);
  // when the folder or name cannot be had, the error goes into text's error state.
  virtual bool SaveUserFile(XString16& path, const char16_t* fileName, uint32_t byteLength,
                            XString16& text);
  // The Msg forms also show a failure with the library's file error message.
  virtual bool SaveFileMsg(XString16& name, XString16& text, XWindow owner);
  virtual bool SaveUserFileMsg(XString16& path, const char16_t* fileName, uint32_t byteLength,
                               XString16& text, XWindow owner);

 private:
  // Sets path to the configuration folder followed by fileName.
  static bool UserPath(XString16& path, const char16_t* fileName, uint32_t byteLength);

  XString16* FileName = nullptr;
  XWindow Owner = nullptr;
};
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

}  // namespace tavi
