//===- error_test.cpp - Error state and message building -------------------===//
#include "tavi/core/error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "core/fake_ui.h"
#include "tavi/core/string.h"
#include "tavi/resource/string_resource.h"

namespace tavi {
namespace {

std::u16string Str(const XString16& s) {
  return s.c_str() ? s.c_str() : u"";
}

std::u16string Message(XError& e) {
  XString16 text;
  text.EmptyString();
  e.AddErrorMessage(text);
  return Str(text);
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
}

TEST(Error, ResetKeepsTheSource) {
  // Callers may still ask where the last error came from after clearing it.
  XError e;
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
  EXPECT_EQ(XError::InternalErrorCode, 1234);
  EXPECT_EQ(Message(e), Lib(kErrInternal) + u" (1234)");
  XError::InternalErrorCode = -7;
  e.SetErrorCode(kErrInternal);
  EXPECT_EQ(Message(e), Lib(kErrInternal) + u" (-7)");
}

TEST(Error, CopyAndImportTakeBothFields) {
  XError a;
  a.SetError(0x20000004, 3);
  XError b(a);
  XError c;
  c.ImportErrorCode(a);
  EXPECT_EQ(b.GetErrorCode(), 0x20000004u);
  EXPECT_EQ(c.GetErrorSource(), 3);
}

TEST(Error, MessageChoosesTextBySourceAndCode) {
  XError e;
  e.SetErrorCode(kErrEndOfData);
  EXPECT_EQ(Message(e), Lib(kErrEndOfData));
  e.SetErrorCode(0x20000016);
  EXPECT_EQ(Message(e), Lib(0x20000016));
  e.SetWinError(static_cast<int32_t>(kErrForeignBufferTooSmall));
  EXPECT_EQ(Message(e), Lib(0x20000002));
  for (uint32_t code : {0x20000002u, 0x20000006u, 0x20000017u, 0x20000018u, 0x20000019u}) {
    e.SetErrorCode(code);
    EXPECT_EQ(Message(e), Lib(kErrUnknown)) << std::hex << code;
  }
  e.SetUserError(77);
  EXPECT_EQ(Message(e), Lib(kErrUser));
  e.SetWinError(2);
  EXPECT_EQ(Message(e), u"The system cannot find the file specified.");
  e.SetErrno(ENOENT);
  EXPECT_EQ(Message(e), u"No such file or directory");
}

TEST(Error, MessageConsumesTheError) {
  XError e;
  e.SetError(5, 7);
  Message(e);
  EXPECT_EQ(e.GetErrorCode(), 0u);
  EXPECT_EQ(e.GetErrorSource(), 0);

  // Without an error, the platform's text for code 0 is appended.
  XError ok;
  EXPECT_EQ(Message(ok), u"The operation completed successfully.");
  EXPECT_TRUE(ok.IsOk());
}

TEST(Error, ErrnoWithoutTextShowsZero) {
  // The fallback prints the code field after it was cleared: callers see "Error (0)".
  XError e;
  e.SetErrno(987654);
  EXPECT_EQ(Message(e), u"Error (0)");
}

TEST(Error, FailedAppendReturnsFalseAndStillClears) {
  char16_t small[4] = {};
  XString16 text;
  text.AttachBuffer(small, sizeof small, false);
  XError e;
  e.SetErrorCode(kErrEndOfData);
  EXPECT_FALSE(e.AddErrorMessage(text));
  EXPECT_TRUE(e.IsOk());
  text.DiscardBuffer();
}

TEST(Error, FormatErrorMessageWritesOrPassesTheFailureOn) {
  XError e;
  e.SetErrorCode(kErrOutOfRange);
  XBuffer out;
  ASSERT_TRUE(e.FormatErrorMessage(out));
  std::u16string written(reinterpret_cast<const char16_t*>(out.GetBuffer()),
                         out.GetBufferPos() / 2);
  EXPECT_EQ(written, Lib(kErrOutOfRange));
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
  test::Fake().answer = 1;
  EXPECT_EQ(e.ErrorMessage(nullptr), 1);
  ASSERT_EQ(test::Fake().boxes.size(), 1u);
  EXPECT_EQ(test::Fake().boxes[0].text, Lib(kErrEndOfData));
  EXPECT_EQ(test::Fake().boxes[0].caption, Lib(kStrErrorCaption));
  EXPECT_EQ(test::Fake().boxes[0].style, 16u);
  EXPECT_TRUE(e.IsOk());

  // The name length is a byte count: 6 bytes are three characters.
  XError none;
  XFileErrorMessage(none, u"abcdef", 6, true, nullptr);
  EXPECT_EQ(test::Fake().boxes[1].text, Lib(kStrFileReadFailed) + u" (\"abc\")");
  XFileErrorMessage(none, u"x", 2, false, nullptr);
  EXPECT_EQ(test::Fake().boxes[2].text, Lib(kStrFileWriteFailed) + u" (\"x\")");
  e.SetWinError(5);
  XFileErrorMessage(e, u"f", 2, false, nullptr);
  EXPECT_EQ(test::Fake().boxes[3].text, u"Access is denied. (\"f\")");
}

TEST(Error, DefaultTableAnswersQuestionsWithNo) {
  // Nothing is overwritten without a person saying yes.
  const XUserInterface* ui = XDefaultUserInterface();
  testing::internal::CaptureStderr();
  EXPECT_EQ(ui->message_box(nullptr, u"Replace?", u"Question", kMbYesNo), kIdNo);
  EXPECT_EQ(ui->message_box(nullptr, u"Done", u"Info", kMbOk), kIdOk);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Question: Replace?\nInfo: Done\n");
}

}  // namespace
}  // namespace tavi
