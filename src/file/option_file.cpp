//===- option_file.cpp - Settings kept as a sorted text file of lines ------===//
#include "tavi/file/option_file.h"

#include "tavi/core/error.h"
#include "tavi/core/string.h"
#include "tavi/core/title_text.h"
#include "tavi/core/user_interface.h"
#include "tavi/file/file.h"
#include "tavi/format/double_text.h"
#include "tavi/format/integer_text.h"
#include "tavi/format/number_options.h"
#include "tavi/format/text_options.h"
#include "tavi/resource/string_resource.h"
#include "tavi/text/code_page.h"
#include "tavi/text/text_file.h"

namespace tavi {

namespace {

// CSIDL number of the user's application-data (configuration) folder.
constexpr int32_t kAppDataFolder = 26;
constexpr uint32_t kErrNumber = 0x20000007;
constexpr uint32_t kErrText = 0x20000008;
constexpr uint32_t kErrTooLarge = 0x20000013;

// The text after the key of a line found by IsOption.
const char16_t* ValueOf(const TTitleText* line, uint32_t keyByteLength) {
  return line->text != nullptr ? line->text + keyByteLength / 2 : u"";
}

}  // namespace

XOptionFile::~XOptionFile() {
  FreeAll();
}

TTitleText* XOptionFile::IsOption(const char16_t* key, uint32_t keyByteLength) const {
  uint32_t index = PrefixIndex(key, keyByteLength);
  return index == kNoIndex ? nullptr : _StrAt(index);
}

int32_t XOptionFile::ErrorMessage(const TTitleText* line, uint32_t code) {
  XString16 text;
  text.EmptyString();
  text.Add(u"Option error: ");
  XError error;
  error.SetErrorCode(code);
  error.AddErrorMessage(text);
  text.Add(u"\nLine: ");
  if (line != nullptr && line->text != nullptr) text.Add(line->text, line->size);
  if (FileName != nullptr && FileName->GetBufferPos() != 0) {
    text.Add(u"\n\nFile: ");
    text.Add(FileName->c_str(), FileName->GetBufferPos());
  }
  return XErrorMessage(text.c_str(), Owner, kMessageBoxIconError);
}

uint16_t XOptionFile::LoadFile(XString16& name, XWindow owner) {
  FileName = &name;
  Owner = owner;
  if (!XFileExist(name)) {
    // The error stays in name; the read below fails and returns 0.
    XString16 text;
    text.EmptyString();
    text.Add(kStrOptionFileMissingBefore, XLibStringResource);
    text.Add(name.c_str(), name.GetBufferPos());
    text.Add(kStrOptionFileMissingAfter, XLibStringResource);
    XErrorMessage(text.c_str(), owner, static_cast<int32_t>(kMbIconInformation));
  }
  const uint16_t format = ExTextFile(name, kFileRead | kFileShareRead | kFileOpenExisting,
                                     XGetLanguageCodePage(0x0400, 3, true), nullptr);
  if (format == 0) return 0;
  SortItems();
  return format;
}

bool XOptionFile::UserPath(XString16& path, const char16_t* fileName, uint32_t byteLength) {
  if (!XGetSystemDirectory(path, kAppDataFolder)) return false;
  if (!path.Add(fileName, byteLength)) {
    path.SetSafeErrorCode(0x20000001);
    return false;
  }
  return true;
}

uint16_t XOptionFile::LoadUserFile(XString16& path, const char16_t* fileName, uint32_t byteLength,
                                   XWindow owner) {
  uint16_t format = 0;
  if (UserPath(path, fileName, byteLength)) format = LoadFile(path, owner);
  if (format == 0) path.ErrorMessage(owner);
  return format;
}

TTitleText* XOptionFile::InputOption(uint32_t& value, const char16_t* key, uint32_t keyByteLength) {
  TTitleText* line = IsOption(key, keyByteLength);
  if (line == nullptr) return nullptr;
  uint32_t v = 0;
  if (_StringToUnsigned(v, ValueOf(line, keyByteLength)) == nullptr) {
    ErrorMessage(line, kErrNumber);
    return nullptr;
  }
  value = v;
  return line;
}

TTitleText* XOptionFile::InputOption(uint16_t& value, const char16_t* key, uint32_t keyByteLength) {
  uint32_t v = 0;
  TTitleText* line = InputOption(v, key, keyByteLength);
  if (line == nullptr) return nullptr;
  if (v >= 0x10000) {
    ErrorMessage(line, kErrTooLarge);
    return nullptr;
  }
  value = static_cast<uint16_t>(v);
  return line;
}

TTitleText* XOptionFile::InputOption(bool& value, const char16_t* key, uint32_t keyByteLength) {
  uint32_t v = 0;
  TTitleText* line = InputOption(v, key, keyByteLength);
  if (line == nullptr) return nullptr;
  if (v > 1) {
    ErrorMessage(line, kErrText);
    return nullptr;
  }
  value = v == 1;
  return line;
}

TTitleText* XOptionFile::InputOption(double& value, const char16_t* key, uint32_t keyByteLength) {
  TTitleText* line = IsOption(key, keyByteLength);
  if (line == nullptr) return nullptr;
  double v = 0;
  if (_StringToDouble(v, ValueOf(line, keyByteLength), gPortableNumberOptions.PointMark(), 0) ==
      nullptr) {
    ErrorMessage(line, kErrNumber);
    return nullptr;
  }
  value = v;
  return line;
}

TTitleText* XOptionFile::InputOption(TTitleText& value, const char16_t* key,
                                     uint32_t keyByteLength) {
  TTitleText* line = IsOption(key, keyByteLength);
  if (line == nullptr) return nullptr;
  const strEnvTextOptions portable;
  if (_StringToText(value, ValueOf(line, keyByteLength), false, portable) == nullptr) {
    ErrorMessage(line, kErrText);
    return nullptr;
  }
  return line;
}

bool XOptionFile::InputOptionDir(XString16& directory, bool create, const char16_t* key,
                                 uint32_t keyByteLength) {
  TTitleText* line = IsOption(key, keyByteLength);
  if (line == nullptr) return false;
  TTitleText folder;
  const strEnvTextOptions portable;
  if (_StringToText(folder, ValueOf(line, keyByteLength), false, portable) == nullptr) {
    ErrorMessage(line, kErrText);
    directory.SetErrorCode(kErrText);
    return false;
  }
  bool ok = folder.size == 0 ? directory.EmptyString() : directory.Set(folder.text, folder.size);
  if (ok && create && !XFileExist(directory)) ok = XDirCreate(directory);
  // An empty folder fails here (0x20000008); a given one is taken as it is.
  if (ok && directory.GetBufferPos() == 0) ok = XDirAddDivider(directory);
  if (ok) return true;
  directory.ErrorMessage(nullptr);
  return false;
}

bool XOptionFile::SaveFile(XString16& name, XString16& text) {
  constexpr uint16_t kMode = kFileWrite | kFileBackup | kFileTruncate | kFileOpenAlways;
  return text.SaveTextFile(name, XGetLanguageCodePage(0x0400, 1, true), kTextUtf16, kMode, nullptr);
}

bool XOptionFile::SaveUserFile(XString16& path, const char16_t* fileName, uint32_t byteLength,
                               XString16& text) {
  if (!UserPath(path, fileName, byteLength)) {
    text.ImportErrorCode(path);
    return false;
  }
  return SaveFile(path, text);
}

bool XOptionFile::SaveFileMsg(XString16& name, XString16& text, XWindow owner) {
  if (SaveFile(name, text)) return true;
  XFileErrorMessage(name, name.c_str(), name.GetBufferPos(), false, owner);
  return false;
}

bool XOptionFile::SaveUserFileMsg(XString16& path, const char16_t* fileName, uint32_t byteLength,
                                  XString16& text, XWindow owner) {
  if (SaveUserFile(path, fileName, byteLength, text)) return true;
  if (text.IsError()) {
    XFileErrorMessage(text, path.c_str(), path.GetBufferPos(), false, owner);
  } else {
    XFileErrorMessage(path, path.c_str(), path.GetBufferPos(), false, owner);
  }
  return false;
}

}  // namespace tavi
