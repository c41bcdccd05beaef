//===- builtin_strings.cpp - The library's built-in English texts ----------===//
//
// The texts of the library's own messages (error codes and the few message-box
// strings), so that messages read well before an application loads a language.
//
//===----------------------------------------------------------------------===//
#include <algorithm>
#include <iterator>

#include "core/internal/text_util.h"
#include "tavi/core/buffer.h"
#include "tavi/core/title_text.h"
#include "tavi/resource/string_resource.h"

namespace tavi {

namespace {

struct BuiltinString {
  int32_t id;
  const char16_t* text;
};

// Sorted by ID.
constexpr BuiltinString kStrings[] = {
    {500000101, u"Error"},
    {500000301, u"The file "},
    {500000302, u" already exists. Do you want to replace it?"},
    {500000351, u"The file "},
    {500000352, u" does not exist. Default settings are used."},
    {0x20000001, u"Not enough memory."},
    {0x20000002, u"The buffer is too small."},
    {0x20000003, u"The operation is not supported."},
    {0x20000004, u"The data ended unexpectedly or is damaged."},
    {0x20000005, u"The character could not be put back."},
    {0x20000006, u"The operation was cancelled."},
    {0x20000007, u"The option value is not a valid number."},
    {0x20000008, u"The option value is not a valid text or folder."},
    {0x20000009, u"The file format is not supported."},
    {0x2000000A, u"The password is wrong."},
    {0x2000000B, u"The text could not be converted."},
    {0x2000000C, u"The file version is not supported."},
    {0x2000000D, u"The data check failed."},
    {0x2000000E, u"The text file uses an encoding that cannot be read."},
    {0x2000000F, u"The text cannot be saved in the chosen encoding."},
    {0x20000010, u"The folder could not be created."},
    {0x20000011, u"The name or text is too long."},
    {0x20000012, u"The text does not fit."},
    {0x20000013, u"The size limit was reached."},
    {0x20000014, u"A position or length is out of range."},
    {0x20000015, u"Internal error"},
    {0x20000016, u"The item was not found."},
    {0x20000017, u"The operation failed."},
    {0x20000018, u"User error."},
    {0x20000019, u"The locale is not available."},
    {0x2000001A, u"Unknown error."},
    {540000001, u"The file could not be written."},
    {540000002, u"The file could not be read."},
};

static_assert(std::is_sorted(std::begin(kStrings), std::end(kStrings),
                             [](const BuiltinString& a, const BuiltinString& b) {
                               return a.id < b.id;
                             }));

class BuiltinStringResource final : public TStringResource {
 public:
  const char16_t* _Get(int32_t id) override {
    auto it = std::lower_bound(std::begin(kStrings), std::end(kStrings), id,
                               [](const BuiltinString& s, int32_t key) { return s.id < key; });
    return it != std::end(kStrings) && it->id == id ? it->text : nullptr;
  }

  bool _Write(XIO& out, int32_t id) override {
    const char16_t* text = _Get(id);
    return text != nullptr && internal::AppendText(out, text);
  }

  bool _SetBuffer(XBuffer& buffer, int32_t id) override {
    const char16_t* text = _Get(id);
    if (text == nullptr) return false;
    buffer.ResetBufferPos();
    return buffer.Add(text);
  }

  bool _Attach(TTitleTextBase& title, int32_t id) override {
    const char16_t* text = _Get(id);
    return text != nullptr && title.Set(text, 2 * internal::TextLength(text), true);
  }
};

// Constant-initialised, so the library's messages work from the first moment,
// static initialisers of other code included.
constinit BuiltinStringResource g_builtin_table;

}  // namespace

constinit TStringResource* XLibStringResource = &g_builtin_table;

TStringResource* XBuiltinStringResource() {
  return &g_builtin_table;
}

}  // namespace tavi
