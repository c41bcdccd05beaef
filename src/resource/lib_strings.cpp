//===- lib_strings.cpp - The library's built-in English texts --------------===//
//
// The default XLibStringResource: the English language file embedded at build time,
// parsed into a string table the first time a message is needed.
//
//===----------------------------------------------------------------------===//
#include "tavi/core/buffer.h"
#include "tavi/resource/string_resource.h"
#include "tavi/resource/string_resource_coll.h"

namespace tavi {

namespace internal {
extern const char16_t kLibStringsText[];
extern const uint32_t kLibStringsTextLength;
}  // namespace internal

namespace {

// Forwards to the parsed table. The table is built on first use (thread-safe) and
// kept to the end of the process, so messages work during static destruction too.
class EmbeddedStringResource final : public TStringResource {
 public:
  constexpr EmbeddedStringResource() = default;

  const char16_t* _Get(int32_t id) override { return Table()._Get(id); }
  bool _Write(XIO& out, int32_t id) override { return Table()._Write(out, id); }
  bool _SetBuffer(XBuffer& buffer, int32_t id) override { return Table()._SetBuffer(buffer, id); }
  bool _Attach(TTitleTextBase& title, int32_t id) override { return Table()._Attach(title, id); }

 private:
  static TTextFileStringResource& Table() {
    static TTextFileStringResource* table = [] {
      auto* t = new TTextFileStringResource;
      XBuffer text;
      if (text.Add(internal::kLibStringsText, internal::kLibStringsTextLength * 2)) {
        t->AddResources(text);
      }
      return t;
    }();
    return *table;
  }
};

// Constant-initialised, so the library's messages work from the first moment,
// static initialisers of other code included.
constinit EmbeddedStringResource g_embedded_table;

}  // namespace

constinit TStringResource* XLibStringResource = &g_embedded_table;

TStringResource* XBuiltinStringResource() {
  return &g_embedded_table;
}

}  // namespace tavi
