//===- date_time_options.cpp - Portable and locale date-time options ------===//
//
// The pattern compiler, the portable settings and the filling of a record from
// a locale's names and patterns.
//
//===----------------------------------------------------------------------===//
#include "tavi/time/date_time_options.h"

#include <cstring>
#include <string>

#include "platform/date_locale.h"

namespace tavi {

namespace {

using Pattern = strDatePattern;

// The widest text a field can produce (names at their capacity).
size_t FieldBound(uint8_t kind, uint8_t width) {
  switch (kind) {
    case Pattern::kYear:
      return width > 4 ? width : 4;
    case Pattern::kMonthName:
    case Pattern::kStandaloneName:
    case Pattern::kWeekdayName:
    case Pattern::kAmPm:
    case Pattern::kEra:
      return kDateNameCapacity;
    default:
      return 2;
  }
}

bool IsAsciiLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// Maps a run of `count` copies of `letter` to an instruction; false for a
// letter this compiler does not take.
bool FieldOf(char16_t letter, size_t count, Pattern::Op& op) {
  const uint8_t n = static_cast<uint8_t>(count);
  op = Pattern::Op{};
  switch (letter) {
    case u'y':
      op.Kind = Pattern::kYear;
      // "yy" would be a two-digit year: the full year is written instead.
      op.Width = (n == 2) ? 1 : (n > 4 ? 4 : n);
      return true;
    case u'M':
    case u'L':
      if (n <= 2) {
        op.Kind = Pattern::kMonth;
        op.Width = n;
      } else {
        op.Kind = letter == u'M' ? Pattern::kMonthName : Pattern::kStandaloneName;
        op.Width = n == 4 ? 1 : 0;
      }
      return true;
    case u'd':
      op.Kind = Pattern::kDay;
      op.Width = n;
      return n <= 2;
    case u'E':
    case u'c':
    case u'e':
      op.Kind = Pattern::kWeekdayName;
      op.Width = n == 4 ? 1 : 0;
      return true;
    case u'H':
    case u'k':
    case u'h':
    case u'K':
      op.Kind = letter == u'H'   ? Pattern::kHour23
                : letter == u'k' ? Pattern::kHour24
                : letter == u'h' ? Pattern::kHour12
                                 : Pattern::kHour11;
      op.Width = n;
      return n <= 2;
    case u'm':
      op.Kind = Pattern::kMinute;
      op.Width = n;
      return n <= 2;
    case u's':
      op.Kind = Pattern::kSecond;
      op.Width = n;
      return n <= 2;
    case u'a':
    case u'b':
    case u'B':
      op.Kind = Pattern::kAmPm;
      return true;
    case u'G':
      op.Kind = Pattern::kEra;
      return true;
    default:
      return false;
  }
}

uint8_t FieldFlags(uint8_t kind) {
  switch (kind) {
    case Pattern::kYear:
    case Pattern::kMonth:
    case Pattern::kMonthName:
    case Pattern::kStandaloneName:
    case Pattern::kDay:
    case Pattern::kEra:
      return Pattern::kHasDate;
    case Pattern::kWeekdayName:
      return Pattern::kHasDate | Pattern::kHasWeekday;
    case Pattern::kAmPm:
      return Pattern::kHasAmPm;
    case Pattern::kHour12:
    case Pattern::kHour11:
      return Pattern::kHasTime | Pattern::kHas12Hour;
    case Pattern::kLiteral:
      return 0;
    default:
      return Pattern::kHasTime;
  }
}

// Builds a pattern while tracking the bounds.
class Builder {
 public:
  explicit Builder(Pattern& p) : p_(p) {}

  bool Literal(char16_t c) {
    if (p_.TextLength >= kDatePatternText) return false;
    if (!open_) {
      if (p_.OpCount >= kDatePatternOps) return false;
      p_.Ops[p_.OpCount++] = Pattern::Op{Pattern::kLiteral, 0, p_.TextLength, 0};
      open_ = true;
    }
    p_.Text[p_.TextLength++] = c;
    ++p_.Ops[p_.OpCount - 1].Length;
    return Grow(1);
  }
  bool Field(const Pattern::Op& op) {
    open_ = false;
    if (p_.OpCount >= kDatePatternOps) return false;
    p_.Ops[p_.OpCount++] = op;
    p_.Fields |= FieldFlags(op.Kind);
    return Grow(FieldBound(op.Kind, op.Width));
  }

 private:
  bool Grow(size_t n) {
    bound_ += n;
    return bound_ <= kMaxDatePatternText;
  }
  Pattern& p_;
  bool open_ = false;
  size_t bound_ = 0;
};

void SetName(strDateName& name, const char16_t* text) {
  const size_t n = std::char_traits<char16_t>::length(text);
  name.Length = static_cast<uint8_t>(n);
  std::memcpy(name.Text, text, n * sizeof(char16_t));
}

// Takes a locale name when it fits; a name that does not keeps the old one.
void TakeName(strDateName& name, const std::u16string& text) {
  if (text.empty() || text.size() > kDateNameCapacity) return;
  name = strDateName{};
  name.Length = static_cast<uint8_t>(text.size());
  std::memcpy(name.Text, text.data(), text.size() * sizeof(char16_t));
}

constexpr const char16_t* kMonthNames[12] = {u"January",   u"February", u"March",    u"April",
                                             u"May",       u"June",     u"July",     u"August",
                                             u"September", u"October",  u"November", u"December"};
constexpr const char16_t* kWeekdayNames[7] = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                              u"Thursday", u"Friday", u"Saturday"};

constexpr const char16_t* kPortableDates[kDateFormCount] = {u"yyyy-MM-dd",     u"d MMM yyyy",
                                                            u"d MMMM yyyy",    u"EEE yyyy-MM-dd",
                                                            u"EEE d MMM yyyy", u"EEEE d MMMM yyyy"};

// The skeletons whose locale patterns fill Dates (in order) and Time.
constexpr const char* kSkeletons[kDateFormCount + 1] = {"yMd",    "yMMMd",      "yMMMMd", "yMEd",
                                                        "yMMMEd", "yMMMMEEEEd", "jm"};

// The separator that follows the hour in a time pattern, ":" when none does.
char16_t SeparatorOf(const Pattern& time) {
  for (uint8_t i = 0; i + 1 < time.OpCount; ++i) {
    const uint8_t kind = time.Ops[i].Kind;
    if (kind >= Pattern::kHour23 && kind <= Pattern::kHour11 &&
        time.Ops[i + 1].Kind == Pattern::kLiteral && time.Ops[i + 1].Length == 1) {
      return time.Text[time.Ops[i + 1].Offset];
    }
  }
  return u':';
}

bool CompileTerminated(Pattern& p, const char16_t* text) {
  return text != nullptr && p.Compile(text, std::char_traits<char16_t>::length(text));
}

}  // namespace

bool strDatePattern::Compile(const char16_t* pattern, size_t length) {
  Pattern p;
  Builder b(p);
  bool ok = pattern != nullptr || length == 0;
  for (size_t i = 0; ok && i < length;) {
    const char16_t c = pattern[i];
    if (c == u'\'') {
      if (i + 1 < length && pattern[i + 1] == u'\'') {
        ok = b.Literal(u'\'');
        i += 2;
        continue;
      }
      // Quoted text up to the closing quote; '' inside is one quote.
      ++i;
      for (;;) {
        if (i >= length) {
          ok = false;
          break;
        }
        if (pattern[i] == u'\'') {
          if (i + 1 < length && pattern[i + 1] == u'\'') {
            ok = b.Literal(u'\'');
            i += 2;
            continue;
          }
          ++i;
          break;
        }
        if (!(ok = pattern[i] != 0 && b.Literal(pattern[i]))) break;
        ++i;
      }
    } else if (IsAsciiLetter(c)) {
      size_t n = 1;
      while (i + n < length && pattern[i + n] == c) ++n;
      Op op;
      ok = n <= 8 && FieldOf(c, n, op) && b.Field(op);
      i += n;
    } else {
      ok = c != 0 && b.Literal(c);
      ++i;
    }
  }
  *this = ok ? p : Pattern{};
  return ok;
}

strEnvDateTimeOptions::strEnvDateTimeOptions(uint32_t locale) {
  SetPortable();
  SetLocale(locale);
}

void strEnvDateTimeOptions::SetPortable() {
  for (int i = 0; i < 12; ++i) {
    SetName(Months[i], kMonthNames[i]);
    Months[i].Length = static_cast<uint8_t>(std::char_traits<char16_t>::length(kMonthNames[i]));
    ShortMonths[i] = strDateName{};
    SetName(ShortMonths[i], kMonthNames[i]);
    ShortMonths[i].Length = 3;
    StandaloneMonths[i] = Months[i];
    StandaloneShortMonths[i] = ShortMonths[i];
  }
  for (int i = 0; i < 7; ++i) {
    SetName(Weekdays[i], kWeekdayNames[i]);
    ShortWeekdays[i] = strDateName{};
    SetName(ShortWeekdays[i], kWeekdayNames[i]);
    ShortWeekdays[i].Length = 3;
  }
  AmPm[0] = strDateName{};
  AmPm[1] = strDateName{};
  Era = strDateName{};
  SetName(AmPm[0], u"AM");
  SetName(AmPm[1], u"PM");
  SetName(Era, u"AD");
  for (uint32_t i = 0; i < kDateFormCount; ++i) CompileTerminated(Dates[i], kPortableDates[i]);
  CompileTerminated(Time, u"HH:mm");
  Glue = strDateTimeGlue{};
  FirstDayOfWeek = 1;
  DecimalPoint = u'.';
  TimeSeparator = u':';
}

bool strEnvDateTimeOptions::SetLocale(uint32_t locale) {
  platform::DateLocaleTexts texts;
  if (!platform::LoadDateLocale(locale, kSkeletons, kDateFormCount + 1, texts)) return false;
  strEnvDateTimeOptions next = *this;
  for (int i = 0; i < 12; ++i) {
    TakeName(next.Months[i], texts.months[i]);
    TakeName(next.ShortMonths[i], texts.shortMonths[i]);
    TakeName(next.StandaloneMonths[i], texts.standaloneMonths[i]);
    TakeName(next.StandaloneShortMonths[i], texts.standaloneShortMonths[i]);
  }
  for (int i = 0; i < 7; ++i) {
    TakeName(next.Weekdays[i], texts.weekdays[i]);
    TakeName(next.ShortWeekdays[i], texts.shortWeekdays[i]);
  }
  TakeName(next.AmPm[0], texts.amPm[0]);
  TakeName(next.AmPm[1], texts.amPm[1]);
  TakeName(next.Era, texts.era);
  for (uint32_t i = 0; i <= kDateFormCount; ++i) {
    Pattern p;
    if (p.Compile(texts.patterns[i].data(), texts.patterns[i].size())) {
      (i < kDateFormCount ? next.Dates[i] : next.Time) = p;
    }
  }
  texts.glue.push_back(0);
  next.SetGlue(texts.glue.data());
  next.FirstDayOfWeek = texts.firstDayOfWeek;
  if (texts.decimal.size() == 1) next.DecimalPoint = texts.decimal[0];
  next.TimeSeparator = SeparatorOf(next.Time);
  *this = next;
  return true;
}

bool strEnvDateTimeOptions::SetDatePattern(uint32_t form, const char16_t* pattern) {
  if (form > (kDateLongMonth | kDateWeekday) || (form & 3) == 3) return false;
  Pattern p;
  if (!CompileTerminated(p, pattern)) return false;
  Dates[(form & 3) + ((form & kDateWeekday) ? 3 : 0)] = p;
  return true;
}

bool strEnvDateTimeOptions::SetTimePattern(const char16_t* pattern) {
  Pattern p;
  if (!CompileTerminated(p, pattern)) return false;
  Time = p;
  TimeSeparator = SeparatorOf(Time);
  return true;
}

bool strEnvDateTimeOptions::SetGlue(const char16_t* glue) {
  if (glue == nullptr) return false;
  // Literal runs before, between and after the two placeholders; quotes as in
  // patterns.
  char16_t runs[3][sizeof Glue.Text / sizeof Glue.Text[0]];
  size_t lengths[3] = {0, 0, 0};
  int part = 0;
  int seen[2] = {0, 0};
  int first = -1;
  bool quoted = false;
  for (const char16_t* p = glue; *p != 0; ++p) {
    if (*p == u'\'') {
      if (p[1] == u'\'') {
        ++p;
      } else {
        quoted = !quoted;
        continue;
      }
    } else if (!quoted && p[0] == u'{' && (p[1] == u'0' || p[1] == u'1') && p[2] == u'}') {
      const int which = p[1] - u'0';
      if (++seen[which] > 1) return false;
      if (first < 0) first = which;
      ++part;
      p += 2;
      continue;
    }
    if (lengths[part] >= sizeof runs[0] / sizeof runs[0][0]) return false;
    runs[part][lengths[part]++] = *p;
  }
  if (quoted || seen[0] != 1 || seen[1] != 1) return false;
  const size_t total = lengths[0] + lengths[1] + lengths[2];
  if (total > sizeof Glue.Text / sizeof Glue.Text[0]) return false;
  strDateTimeGlue g;
  g.TimeFirst = first == 0 ? 1 : 0;
  g.BeforeLength = static_cast<uint8_t>(lengths[0]);
  g.BetweenLength = static_cast<uint8_t>(lengths[1]);
  g.AfterLength = static_cast<uint8_t>(lengths[2]);
  size_t at = 0;
  for (int i = 0; i < 3; ++i) {
    std::memcpy(g.Text + at, runs[i], lengths[i] * sizeof(char16_t));
    at += lengths[i];
  }
  Glue = g;
  return true;
}

const strEnvDateTimeOptions gPortableDateTimeOptions;

}  // namespace tavi
