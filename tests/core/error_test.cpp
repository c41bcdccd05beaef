//===- error_test.cpp - Error state and message building -------------------===//
#include "tavi/core/error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <tuple>

#include "core/fake_ui.h"
#include "tavi/core/string.h"
#include "tavi/resource/string_resource.h"

namespace tavi {
namespace {

using test::Fake;

std::u16string Message(XError& e) {
  XString16 text;
  text.EmptyString();
  e.AddErrorMessage(text);
  return text.c_str();
}

std::u16string Lib(uint32_t id) {
  return XLibStringResource->Get(static_cast<int32_t>(id));
}

TEST(Error, SafeSettersKeepTheFirstCause) {
  XError e;
  e.SetWinError(3);
  e.SetSafeErrorCode(7);
  e.SetSafeUserError(9);
  e.SetSafeErrno();
  EXPECT_EQ(e.GetErrorCode(), 3u);
  EXPECT_EQ(e.GetErrorSource(), kErrSourcePlatform);
  XError::InternalErrorCode = 42;
  e.SetSafeIntrnalError(9);
  EXPECT_EQ(XError::InternalErrorCode, 42) << "a skipped internal error leaves the detail alone";

  e.SetUserError(11);  // unsafe setters always overwrite
  EXPECT_EQ(e.GetUserError(), 11u);
  e.SetErrorCode(11);
  EXPECT_EQ(e.GetUserError(), 0u) << "only source-3 codes are user errors";

  // Callers may still ask where the last error came from after clearing it.
  e.SetWinError(5);
  e.ResetError();
  EXPECT_TRUE(e.IsOk());
  EXPECT_EQ(e.GetErrorSource(), kErrSourcePlatform);
}

TEST(Error, InternalErrorRecordsDetail) {
  XError e;
  e.SetError(1, kErrSourceUser);
  e.SetInternalError(1234);
  EXPECT_EQ(e.GetErrorCode(), kErrInternal);
  EXPECT_EQ(e.GetErrorSource(), kErrSourcePlain);
  EXPECT_EQ(Message(e), Lib(kErrInternal) + u" (1234)");
  XError::InternalErrorCode = -7;
  e.SetErrorCode(kErrInternal);
  EXPECT_EQ(Message(e), Lib(kErrInternal) + u" (-7)");
}

TEST(Error, MessageChoosesTextBySourceAndConsumesTheError) {
  const struct {
    uint32_t code;
    int32_t source;
    std::u16string text;
  } kCases[] = {
      {kErrEndOfData, kErrSourcePlain, Lib(kErrEndOfData)},
      {0x20000016, kErrSourcePlain, Lib(0x20000016)},
      {kErrForeignBufferTooSmall, kErrSourcePlatform, Lib(0x20000002)},
      {0x20000002, kErrSourcePlain, Lib(kErrUnknown)},
      {0x20000006, kErrSourcePlain, Lib(kErrUnknown)},
      {0x20000017, kErrSourcePlain, Lib(kErrUnknown)},
      {0x20000018, kErrSourcePlain, Lib(kErrUnknown)},
      {0x20000019, kErrSourcePlain, Lib(kErrUnknown)},
      {77, kErrSourceUser, Lib(kErrUser)},
      {2, kErrSourcePlatform, u"The system cannot find the file specified."},
      {5, 7, u"Access is denied."},  // an unknown source reads as a platform code
      {0, kErrSourcePlain, u"The operation completed successfully."},
      {ENOENT, kErrSourceErrno, u"No such file or directory"},
      // Without a text for the errno value, the fallback prints the code field after it
      // was cleared: callers see "Error (0)".
      {987654, kErrSourceErrno, u"Error (0)"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.code << " source " << c.source);
    XError e;
    e.SetError(c.code, c.source);
    EXPECT_EQ(Message(e), c.text);
    EXPECT_TRUE(e.GetErrorCode() == 0 && e.GetErrorSource() == 0) << "consumed";
  }
}

TEST(Error, FormatErrorMessageWritesOrPassesTheFailureOn) {
  XError e;
  e.SetErrorCode(kErrOutOfRange);
  XString16 out;  // no terminator is written: the string adds its own
  ASSERT_TRUE(e.FormatErrorMessage(out));
  EXPECT_EQ(out.c_str(), Lib(kErrOutOfRange));
  EXPECT_EQ(out.GetBufferPos(), 2 * Lib(kErrOutOfRange).size());
  // A target that cannot take the text still consumes the error.
  char16_t small[4] = {};
  XString16 fixed;
  fixed.AttachBuffer(small, sizeof small, false);
  e.SetErrorCode(kErrEndOfData);
  EXPECT_FALSE(e.AddErrorMessage(fixed));
  EXPECT_TRUE(e.IsOk());

  // A string table that fails to write makes the message building fail, and the
  // target stream is told why.
  struct Broken : TStringResource {
    const char16_t* _Get(int32_t) override { return u"text"; }
    bool _Write(XIO& out, int32_t) override {
      out.SetErrorCode(kErrNoMemory);
      return false;
    }
    bool _SetBuffer(XBuffer&, int32_t) override { return false; }
    bool _Attach(TTitleTextBase&, int32_t) override { return false; }
  } broken;
  TStringResource* saved = XLibStringResource;
  ASSERT_TRUE(XSetLibStringResource(&broken));
  EXPECT_FALSE(XSetLibStringResource(nullptr));
  XBuffer target;
  e.SetErrorCode(kErrEndOfData);
  EXPECT_FALSE(e.FormatErrorMessage(target));
  EXPECT_EQ(target.GetErrorCode(), kErrNoMemory);
  EXPECT_EQ(target.GetBufferPos(), 0u);
  XSetLibStringResource(saved);
}

TEST(Error, MessageBoxesGoThroughTheUserInterfaceTable) {
  test::ScopedFakeUi ui;
  XError e;
  e.SetErrorCode(kErrEndOfData);
  Fake().answer = 1;
  EXPECT_EQ(e.ErrorMessage(nullptr), 1);
  ASSERT_EQ(Fake().boxes.size(), 1u);
  const test::MessageBoxCall& box = Fake().boxes[0];
  EXPECT_EQ(std::tie(box.text, box.caption, box.style),
            std::make_tuple(Lib(kErrEndOfData), Lib(kStrErrorCaption), 16u));
  EXPECT_TRUE(e.IsOk());

  // The name length is a byte count: 6 bytes are three characters.
  XFileErrorMessage(e, u"abcdef", 6, true, nullptr);
  XFileErrorMessage(e, u"x", 2, false, nullptr);
  e.SetWinError(5);
  XFileErrorMessage(e, u"f", 2, false, nullptr);
  EXPECT_EQ(Fake().boxes[1].text, Lib(kStrFileReadFailed) + u" (\"abc\")");
  EXPECT_EQ(Fake().boxes[2].text, Lib(kStrFileWriteFailed) + u" (\"x\")");
  EXPECT_EQ(Fake().boxes[3].text, u"Access is denied. (\"f\")");
}

}  // namespace
}  // namespace tavi
