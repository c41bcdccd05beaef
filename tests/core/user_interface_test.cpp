//===- user_interface_test.cpp - The default and partial host tables -------===//
#include "tavi/core/user_interface.h"

#include <gtest/gtest.h>

#include "tavi/core/local_buffer.h"
#include "tavi/core/string.h"

namespace tavi {
namespace {

TEST(UserInterface, DefaultTableAnswersQuestionsWithNo) {
  // Nothing is overwritten without a person saying yes.
  const XUserInterface* ui = XDefaultUserInterface();
  testing::internal::CaptureStderr();
  EXPECT_EQ(ui->message_box(nullptr, u"Replace?", u"Question", kMbYesNo), kIdNo);
  EXPECT_EQ(ui->message_box(nullptr, u"Done", u"Info", kMbOk), kIdOk);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Question: Replace?\nInfo: Done\n");
}

TEST(UserInterface, NullEntriesFallBackToTheDefaultTable) {
  // Window text goes nowhere; edit controls and the clipboard are not supported.
  XUserInterface only_boxes{};
  only_boxes.message_box = [](XWindow, const char16_t*, const char16_t*, uint32_t) {
    return kIdCancel;
  };
  const XUserInterface* tables[] = {nullptr, &only_boxes};
  for (const XUserInterface* table : tables) {
    XSetUserInterface(table);
    XString16 s;
    EXPECT_TRUE(s.WndGetText(reinterpret_cast<XWindow>(1)));
    EXPECT_EQ(s.GetBufferPos(), 0u);
    EXPECT_TRUE(s.WndSetText(reinterpret_cast<XWindow>(1)));
    EXPECT_FALSE(s.CopyToClipboard(nullptr));
    EXPECT_EQ(s.GetErrorCode(), kPlatformErrorNotSupported);
    WLocalBuffer edit;
    EXPECT_FALSE(edit.ShareTextHandle(reinterpret_cast<XWindow>(9), kShareTextOwn));
  }
  EXPECT_EQ(XGetUserInterface()->message_box(nullptr, u"", u"", kMbOk), kIdCancel);
  EXPECT_EQ(XSetUserInterface(nullptr), &only_boxes);
  EXPECT_EQ(XGetUserInterface(), XDefaultUserInterface());
}

}  // namespace
}  // namespace tavi
