//===- language_file_fuzz.cpp - Fuzz parsing language files -------------------===//
//
// The input is UTF-16 text parsed by AddResources (half the inputs are first
// widened from bytes so that plain-text seeds mutate well). Every stored string must
// have an ID in range, a non-empty terminated text, and the table must stay sorted
// by strictly ascending ID with no more strings than lines. The lines handed to the
// sink must be numbered 1, 2, ...; exactly the lines called added are stored, and the
// load succeeds exactly when no definition was refused and something was stored.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/resource/string_resource_coll.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::SilenceMessageBoxes();

  tavi::fuzz::InputReader in(data, size);
  const bool widen = (in.Take<uint8_t>() & 1) != 0;
  std::vector<char16_t> text;
  if (widen) {
    text.assign(in.data(), in.data() + in.size());
  } else {
    for (size_t i = 0; i + 1 < in.size(); i += 2) {
      text.push_back(static_cast<char16_t>(in.data()[i] | in.data()[i + 1] << 8));
    }
  }
  size_t lines = 1;
  for (char16_t c : text) lines += c == u'\n';

  struct Walk {
    uint32_t lines = 0, added = 0, refused = 0;
  } walk;
  auto sink = [](void* context, const tavi::XLanguageFileLine& line) {
    auto& w = *static_cast<Walk*>(context);
    FUZZ_ASSERT(line.number == ++w.lines);
    switch (line.verdict) {
      case tavi::XLanguageLineVerdict::kComment:
        FUZZ_ASSERT(line.digit_count == 0 && line.value == nullptr);
        break;
      case tavi::XLanguageLineVerdict::kDigitsComment:
        FUZZ_ASSERT(line.digit_count != 0 && line.value == nullptr);
        break;
      case tavi::XLanguageLineVerdict::kAdded:
        FUZZ_ASSERT(line.id >= 1 && line.id <= 0x7FFFFFFE && line.value_units != 0);
        ++w.added;
        break;
      case tavi::XLanguageLineVerdict::kIdOutOfRange:
        FUZZ_ASSERT(line.id == 0 || line.id == 0x7FFFFFFF);
        ++w.refused;
        break;
      case tavi::XLanguageLineVerdict::kEmptyValue:
        FUZZ_ASSERT(line.value_units == 0);
        ++w.refused;
        break;
      default:
        ++w.refused;
        break;
    }
  };

  tavi::XBuffer buffer;
  if (!text.empty()) buffer.Add(text.data(), static_cast<uint32_t>(text.size() * 2));
  tavi::TTextFileStringResource table;
  const bool ok = table.AddResources(buffer, sink, &walk);
  FUZZ_ASSERT(walk.lines <= lines);
  FUZZ_ASSERT(walk.added == table.GetCount());
  FUZZ_ASSERT(ok == (walk.refused == 0 && walk.added != 0));
  FUZZ_ASSERT(table.GetCount() <= lines);
  for (uint32_t i = 0; i < table.GetCount(); ++i) {
    const tavi::TResourceStringItem* item = table._ResourceStringItem(i);
    FUZZ_ASSERT(item->ID >= 1 && item->ID <= 0x7FFFFFFE);
    FUZZ_ASSERT(item->Size != 0 && item->Size % 2 == 0 && item->Text()[item->Size / 2] == 0);
    if (i > 0) FUZZ_ASSERT(table._ResourceStringItem(i - 1)->ID < item->ID);
  }
  tavi::XSetUserInterface(nullptr);
  return 0;
}
