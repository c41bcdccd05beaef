//===- local_buffer_test.cpp - WLocalBuffer and edit-control memory --------===//
#include "tavi/core/local_buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

#include "core/fake_ui.h"

namespace tavi {
namespace {

using test::Fake;
using test::Window;

// Gives fake edit control `id` a text held in local memory, as a control keeps it.
void MakeEdit(uintptr_t id, const std::u16string& text) {
  XLocalMemory h = XLocalAlloc(kLocalMoveable, static_cast<uint32_t>((text.size() + 1) * 2));
  std::memcpy(XLocalLock(h), text.c_str(), (text.size() + 1) * 2);
  XLocalUnlock(h);
  Fake().edit_handles[id] = h;
  Fake().windows[id] = text;
}

std::u16string Data(const XBuffer& b) {
  return std::u16string(reinterpret_cast<const char16_t*>(b.GetBuffer()), b.GetBufferPos() / 2);
}

// What a call returned, whether the buffer is then attached, and its text.
using Shape = std::tuple<bool, bool, std::u16string>;
Shape After(bool ok, const WLocalBuffer& b) {
  return {ok, b.GetBufferAttached(), Data(b)};
}

TEST(LocalMemory, HandlesLocksAndSizes) {
  XLocalMemory h = XLocalAlloc(kLocalZeroInit, 8);
  ASSERT_NE(h, nullptr);
  EXPECT_EQ(XLocalSize(h), 8u);
  EXPECT_EQ(static_cast<uint8_t*>(XLocalLock(h))[7], 0);
  EXPECT_FALSE(XLocalUnlock(h));
  EXPECT_EQ(XGetLastError(), 0u) << "the last lock released";
  EXPECT_FALSE(XLocalUnlock(h));
  EXPECT_NE(XGetLastError(), 0u) << "not locked";
  ASSERT_EQ(XLocalReAlloc(h, 100, kLocalMoveable | kLocalZeroInit), h);
  EXPECT_EQ(static_cast<uint8_t*>(XLocalLock(h))[99], 0);
  EXPECT_EQ(XLocalFree(h), nullptr);
  EXPECT_EQ(XLocalSize(nullptr), 0u);
}

TEST(LocalBuffer, GrowsInLocalMemory) {
  WLocalBuffer b;
  for (int i = 0; i < 50; ++i) ASSERT_TRUE(b.Add(i == 0 ? u"first" : u" more"));
  EXPECT_EQ(Data(b).substr(0, 10), u"first more");
  EXPECT_GE(XLocalSize(b.GetHandle()), b.GetBufferSize() + 4);
  b.FreeBuffer();
  EXPECT_EQ(b.GetHandle(), nullptr);
}

TEST(LocalBuffer, ShareOwnedTakesTheControlsText) {
  test::ScopedFakeUi ui;
  MakeEdit(5, u"edit text");
  WLocalBuffer b;
  EXPECT_EQ(After(b.ShareTextHandle(Window(5), kShareTextOwn), b),
            Shape(true, false, u"edit text"));
  EXPECT_TRUE(b.GetHandle() == Fake().edit_handles[5] && b.GetBufferSize() == 18);
  ASSERT_TRUE(b.Add(u"!"));
  EXPECT_FALSE(b.GiveTextHandle(Window(5), false)) << "the control already has this block";
  // Another control takes the block and frees its own.
  MakeEdit(6, u"other");
  ASSERT_TRUE(b.GiveTextHandle(Window(6), true));
  EXPECT_TRUE(b.GetBuffer() == nullptr && b.GetHandle() == nullptr);
  EXPECT_EQ(Fake().invalidated, std::vector<uintptr_t>{6});
  EXPECT_EQ(std::u16string(static_cast<const char16_t*>(XLocalLock(Fake().edit_handles[6]))),
            u"edit text!");
  XLocalUnlock(Fake().edit_handles[6]);
  Fake().edit_handles.erase(5);  // both controls hold the one block now
}

TEST(LocalBuffer, TakeLeavesTheControlAFreshBlock) {
  test::ScopedFakeUi ui;
  MakeEdit(6, u"mine");
  XLocalMemory original = Fake().edit_handles[6];
  {
    WLocalBuffer b;
    EXPECT_EQ(After(b.ShareTextHandle(Window(6), kShareTextTake), b), Shape(true, true, u"mine"));
    EXPECT_TRUE(Fake().edit_handles[6] != original && XLocalSize(Fake().edit_handles[6]) == 0);
    EXPECT_EQ(After(b.DetachTextHandle(), b), Shape(true, false, u""));
  }
  XLocalFree(original);
}

TEST(LocalBuffer, EmptyTextAndMisuse) {
  test::ScopedFakeUi ui;
  MakeEdit(7, u"");
  WLocalBuffer b;
  EXPECT_TRUE(b.ShareTextHandle(Window(7), kShareTextOwn)) << "empty text: the window exists";
  EXPECT_FALSE(b.ShareTextHandle(Window(8), kShareTextOwn));

  EXPECT_FALSE(b.GiveTextHandle(Window(7), false));
  EXPECT_EQ(b.GetErrorCode(), kErrInternal);
  EXPECT_EQ(XError::InternalErrorCode, 1002);

  EXPECT_TRUE(b.DetachTextHandle()) << "nothing allocated, not attached";
  char16_t block[2];
  WLocalBuffer attached;
  attached.AttachBuffer(block, sizeof block, false);
  EXPECT_FALSE(attached.DetachTextHandle());
  EXPECT_EQ(XError::InternalErrorCode, 1001);
}

}  // namespace
}  // namespace tavi
