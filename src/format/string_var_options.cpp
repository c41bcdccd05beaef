//===- string_var_options.cpp - The words for boolean values --------------===//
#include <cstring>

#include "tavi/core/string.h"
#include "tavi/core/title_text.h"
#include "tavi/format/text_options.h"

namespace tavi {

void strEnvStringVarOptions::SetPortable() {
  SetVarStr(True.text, True.size, kWordCapacity, u"True", 8);
  SetVarStr(False.text, False.size, kWordCapacity, u"False", 10);
  SetVarStr(Yes.text, Yes.size, kWordCapacity, u"Yes", 6);
  SetVarStr(No.text, No.size, kWordCapacity, u"No", 4);
}

bool strEnvStringVarOptions::SetVarStr(char16_t* destination, uint32_t& size, uint32_t capacity,
                                       const char16_t* source, uint32_t sourceSize) {
  if (source == nullptr || sourceSize == 0 || capacity == 0) return false;
  const uint32_t room = capacity * 2 - 2;
  const uint32_t copied = (sourceSize < room ? sourceSize : room) & ~uint32_t{1};
  std::memmove(destination, source, copied);
  destination[copied / 2] = 0;
  size = copied;
  return sourceSize <= room;
}

bool strEnvStringVarOptions::SetTrueStr(const TTitleTextBase& text) {
  return Set(True, text.text, text.size);
}
bool strEnvStringVarOptions::SetTrueStr(const XString16& text) {
  return Set(True, text.c_str(), text.GetBufferPos());
}
bool strEnvStringVarOptions::SetFalseStr(const TTitleTextBase& text) {
  return Set(False, text.text, text.size);
}
bool strEnvStringVarOptions::SetFalseStr(const XString16& text) {
  return Set(False, text.c_str(), text.GetBufferPos());
}
bool strEnvStringVarOptions::SetYesStr(const TTitleTextBase& text) {
  return Set(Yes, text.text, text.size);
}
bool strEnvStringVarOptions::SetYesStr(const XString16& text) {
  return Set(Yes, text.c_str(), text.GetBufferPos());
}
bool strEnvStringVarOptions::SetNoStr(const TTitleTextBase& text) {
  return Set(No, text.text, text.size);
}
bool strEnvStringVarOptions::SetNoStr(const XString16& text) {
  return Set(No, text.c_str(), text.GetBufferPos());
}

}  // namespace tavi
