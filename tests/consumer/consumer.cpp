// Uses the installed library: a buffer, a string and an error message.
#include <tavi/tavi.h>

#include <cstdio>

int main() {
  tavi::XString16 text;
  text.Set(u"tavi");
  tavi::XBuffer buffer;
  buffer.Write(text);
  tavi::XString16 back;
  if (!buffer.Read(back) || back.IsDifferent(text)) return 1;
  tavi::XError error;
  error.SetErrorCode(tavi::kErrEndOfData);
  tavi::XString16 message;
  if (!error.AddErrorMessage(message) || message.GetLenght() == 0) return 1;
  std::printf("consumer: tavi %s works\n", tavi::XGetVersionString());
  return 0;
}
