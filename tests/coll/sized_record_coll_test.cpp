//===- sized_record_coll_test.cpp - Collections of sized records -----------===//
#include "tavi/coll/sized_record_coll.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "file/file_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/file/file.h"
#include "tavi/file/file_header.h"
#include "tavi/io/sized_record.h"

namespace tavi {
namespace {

using Bytes = std::string;

constexpr uint32_t kId = 0x44524352;

// A saveable collection that also counts the item hooks, so that the form chosen
// by the header can be seen.
class Records : public XSizedRecordColl {
 public:
  using XSizedRecordColl::_AddRecord;
  int items_written = 0, items_read = 0;
  bool last_utf8 = false;

  ~Records() override { FreeAll(); }
  bool WriteItem(XIO& out, const XSizedRecord* record, bool utf8) override {
    ++items_written;
    last_utf8 = utf8;
    return XSizedRecordColl::WriteItem(out, record, utf8);
  }
  bool ReadItem(XBuffer& work, XIO& in, bool utf8) override {
    ++items_read;
    last_utf8 = utf8;
    return XSizedRecordColl::ReadItem(work, in, utf8);
  }
  bool WriteFileHeader(XFile& file, XFileHeader256& header, uint32_t flags) override {
    header.SetForWriting(kId, flags);
    header.reserved = 0;
    return header.Write(file);
  }
  bool ReadFileHeader(XFile& file, XFileHeader256& header) override {
    return header.Read(file) && header.IsFor(kId);
  }
  // The records as their bytes ("-" for a missing one).
  std::vector<Bytes> Contents() const {
    std::vector<Bytes> out;
    for (uint32_t i = 0; i < GetCount(); ++i) {
      const auto* r = static_cast<const XSizedRecord*>(At(i));
      out.push_back(r ? Bytes(reinterpret_cast<const char*>(r), r->GetSize()) : "-");
    }
    return out;
  }
};

Bytes Word(uint32_t v) {
  return Bytes{char(v), char(v >> 8), char(v >> 16), char(v >> 24)};
}
Bytes Record(const Bytes& payload) {
  return Word(uint32_t(payload.size() + 4)) + payload;
}

void Fill(Records& c, const std::vector<Bytes>& records) {
  for (const Bytes& r : records) {
    if (r == "-") {
      c.AtInsert(c.GetCount(), nullptr);
    } else {
      ASSERT_NE(c._AddRecord(XSizedRecord::At(r.data())), nullptr);
    }
  }
}

XBuffer Over(const Bytes& bytes) {
  XBuffer b;
  b._Write(bytes.data(), static_cast<uint32_t>(bytes.size()));
  return b;
}

Bytes Data(const XBuffer& b) {
  return Bytes(static_cast<const char*>(b.GetBuffer()), b.GetBufferPos());
}

const std::vector<Bytes> kSample = {Record("first"), Record(""), "-", Record(Bytes(300, 'x')),
                                    Record(Bytes("\0\1\2", 3))};

// Both forms lay the records out the same way: count, then each record's bytes, a
// missing one as a zero size. Reading either gives the records back.
TEST(SizedRecordColl, BothFormsRoundTrip) {
  Bytes expected = Word(5);
  for (const Bytes& r : kSample) expected += r == "-" ? Word(0) : r;

  Records empty;
  XBuffer nothing;
  ASSERT_TRUE(empty.WriteRaw(nothing));
  EXPECT_EQ(Data(nothing), Word(0));
  EXPECT_TRUE(empty.ReadRaw(nothing));
  XBuffer zero = Over(Word(0));
  EXPECT_TRUE(empty.Read(zero, false) && empty.GetCount() == 0);

  Records c;
  Fill(c, kSample);
  for (bool raw : {true, false}) {
    SCOPED_TRACE(raw);
    XBuffer out;
    ASSERT_TRUE(raw ? c.WriteRaw(out) : c.Write(out, false));
    EXPECT_EQ(Data(out), expected);
    Records back;
    Fill(back, {Record("kept")});
    ASSERT_TRUE(raw ? back.ReadRaw(out) : back.Read(out, false));
    std::vector<Bytes> all = {Record("kept")};
    all.insert(all.end(), kSample.begin(), kSample.end());
    EXPECT_EQ(back.Contents(), all);
    EXPECT_TRUE(out.EoB());
  }

  // Item data: appended or replacing; a missing record or an index past the end
  // empties the buffer and fails.
  XBuffer b = Over("zz");
  EXPECT_TRUE(c.AddItemData(b, 0));
  EXPECT_EQ(Data(b), "zz" + kSample[0]);
  EXPECT_TRUE(c.GetItemData(b, 3));
  EXPECT_EQ(Data(b), kSample[3]);
  for (uint32_t index : {2u, 5u}) {
    EXPECT_FALSE(c.GetItemData(b, index));
    EXPECT_EQ(b.GetBufferPos(), 0u);
    EXPECT_EQ(b.GetErrorCode(), kErrDoesNotFit);
  }
}

// The header in the caller field picks the form: none or flags 0 raw, any flag the
// item-by-item stream form with the header's UTF-8 flag.
TEST(SizedRecordColl, HeaderChoosesTheForm) {
  Records c;
  Fill(c, kSample);
  XFileHeader256 header;
  struct Case {
    XFileHeader256* header;
    uint32_t flags;
    int items;
    bool utf8;
  } cases[] = {{nullptr, 0, 0, false},
               {&header, 0, 0, false},
               {&header, 4, 5, true},
               {&header, 1, 5, false}};
  for (const Case& k : cases) {
    header.SetForWriting(kId, k.flags);
    XBuffer out;
    out.SetData(k.header);
    c.items_written = 0;
    ASSERT_TRUE(c.Write(out));
    EXPECT_EQ(c.items_written, k.items);
    Records back;
    ASSERT_TRUE(back.Read(out));
    EXPECT_EQ(back.items_read, k.items);
    EXPECT_EQ(back.Contents(), c.Contents());
    if (k.items) {
      EXPECT_EQ(back.last_utf8, k.utf8);
    }
  }
}

TEST(SizedRecordColl, SavedByNameRawAndPacked) {
  test::ScratchDir dir;
  Records c;
  Fill(c, kSample);
  Fill(c, {Record(Bytes((1 << 20) + 100, 'q'))});  // larger than a directly read record
  for (uint32_t flags : {0u, 3u, 4u}) {
    SCOPED_TRACE(flags);
    XString16 name = test::Str(dir.Name(u"records"));
    ASSERT_TRUE(c.SaveFile(name, flags, u"pw", kFileWrite | kFileCreateAlways, nullptr));
    Records back;
    ASSERT_TRUE(back.LoadFile(
        name, [](XString16& p, void*) { return p.Set(u"pw", uint32_t{4}); }, nullptr, kFileRead));
    EXPECT_EQ(back.Contents(), c.Contents());
  }
}

// Hostile bodies fail with their code, without reserving memory for what the data
// cannot hold; callers can rely on the records read before the failure staying.
TEST(SizedRecordColl, HostileBodiesKeepOnlyWhatWasRead) {
  const Bytes two = Word(2) + Record("ab") + Record("cd");
  struct Case {
    const char* what;
    Bytes body;
    uint32_t raw_code, stream_code;
    bool first_read;
  } cases[] = {
      {"short count", Bytes("\1\0", 2), kErrEndOfData, kErrEndOfData, false},
      {"huge count", Word(0x7FFFFFFF) + Record("ab"), kErrEndOfData, kErrEndOfData, true},
      {"too many for the indices", Word(0xFFFFFFFF), kErrNoMemory, kErrNoMemory, false},
      {"size below four", Word(1) + Word(3), kErrEndOfData, kErrEndOfData, false},
      {"huge size", Word(1) + Word(0xFFFFFFF0) + "abc", kErrNoMemory, kErrEndOfData, false},
      {"short body", Word(1) + Word(10) + "abc", kErrNoMemory, kErrEndOfData, false},
      {"missing second record", two.substr(0, 10), kErrEndOfData, kErrEndOfData, true},
  };
  for (const Case& k : cases) {
    for (bool raw : {true, false}) {
      SCOPED_TRACE(std::string(k.what) + (raw ? " raw" : " stream"));
      Records c;
      Fill(c, {Record("old")});
      XBuffer in = Over(k.body);
      EXPECT_FALSE(raw ? c.ReadRaw(in) : c.Read(in, false));
      EXPECT_EQ(in.GetErrorCode(), raw ? k.raw_code : k.stream_code);
      std::vector<Bytes> expected = {Record("old")};
      if (k.first_read) expected.push_back(Record("ab"));
      EXPECT_EQ(c.Contents(), expected);
      EXPECT_LT(c.GetItemsDim(), 4096u);
    }
  }
}

}  // namespace
}  // namespace tavi
