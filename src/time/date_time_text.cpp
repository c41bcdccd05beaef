//===- date_time_text.cpp - Dates, times and durations as text ------------===//
//
// Runs compiled patterns over calendar fields to write text, and back over text
// to read fields; formats and reads the durations of the process timer.
//
//===----------------------------------------------------------------------===//
#include "tavi/time/date_time_text.h"

#include <cstring>

#include "platform/locale.h"
#include "tavi/core/error.h"
#include "tavi/io/stream.h"
#include "tavi/time/date_time.h"
#include "time/internal/proc_time.h"

namespace tavi {

namespace {

using Pattern = strDatePattern;

// The fields a pattern may write; weekday 0 = Sunday.
struct Fields {
  uint16_t year;
  uint8_t month;
  uint8_t day;
  uint8_t hour;
  uint8_t minute;
  uint8_t weekday;
};

// "00".."99" as character pairs.
struct PairTable {
  char16_t pairs[200];
  constexpr PairTable() : pairs() {
    for (int i = 0; i < 100; ++i) {
      pairs[2 * i] = static_cast<char16_t>(u'0' + i / 10);
      pairs[2 * i + 1] = static_cast<char16_t>(u'0' + i % 10);
    }
  }
};
constexpr PairTable kPairs;

inline char16_t* Put2(char16_t* out, unsigned v) {
  std::memcpy(out, kPairs.pairs + 2 * v, 2 * sizeof(char16_t));
  return out + 2;
}

// A value below 100 with at least `width` digits (1 or 2).
inline char16_t* PutSmall(char16_t* out, unsigned v, uint8_t width) {
  if (v < 10 && width < 2) {
    *out = static_cast<char16_t>(u'0' + v);
    return out + 1;
  }
  return Put2(out, v);
}

// A year (1..9999) with at least `width` digits (at most 4).
inline char16_t* PutYear(char16_t* out, unsigned v, uint8_t width) {
  unsigned digits = v >= 1000 ? 4 : v >= 100 ? 3 : v >= 10 ? 2 : 1;
  if (digits < width) digits = width;
  if (digits == 4) return Put2(Put2(out, v / 100), v % 100);
  if (digits == 3) {
    *out++ = static_cast<char16_t>(u'0' + v / 100);
    return Put2(out, v % 100);
  }
  return PutSmall(out, v, static_cast<uint8_t>(digits));
}

inline char16_t* PutName(char16_t* out, const strDateName& name) {
  std::memcpy(out, name.Text, name.Length * sizeof(char16_t));
  return out + name.Length;
}

char16_t* RunPattern(char16_t* out, const Pattern& p, const Fields& f,
                     const strEnvDateTimeOptions& o) {
  for (uint8_t i = 0; i < p.OpCount; ++i) {
    const Pattern::Op op = p.Ops[i];
    switch (op.Kind) {
      case Pattern::kLiteral:
        std::memcpy(out, p.Text + op.Offset, op.Length * sizeof(char16_t));
        out += op.Length;
        break;
      case Pattern::kYear:
        out = PutYear(out, f.year, op.Width);
        break;
      case Pattern::kMonth:
        out = PutSmall(out, f.month, op.Width);
        break;
      case Pattern::kMonthName:
        out = PutName(out, (op.Width ? o.Months : o.ShortMonths)[f.month - 1]);
        break;
      case Pattern::kStandaloneName:
        out = PutName(out, (op.Width ? o.StandaloneMonths : o.StandaloneShortMonths)[f.month - 1]);
        break;
      case Pattern::kDay:
        out = PutSmall(out, f.day, op.Width);
        break;
      case Pattern::kWeekdayName:
        out = PutName(out, (op.Width ? o.Weekdays : o.ShortWeekdays)[f.weekday]);
        break;
      case Pattern::kHour23:
        out = PutSmall(out, f.hour, op.Width);
        break;
      case Pattern::kHour24:
        out = PutSmall(out, f.hour == 0 ? 24 : f.hour, op.Width);
        break;
      case Pattern::kHour12:
        out = PutSmall(out, f.hour % 12 == 0 ? 12 : f.hour % 12, op.Width);
        break;
      case Pattern::kHour11:
        out = PutSmall(out, f.hour % 12, op.Width);
        break;
      case Pattern::kMinute:
        out = PutSmall(out, f.minute, op.Width);
        break;
      case Pattern::kSecond:
        out = PutSmall(out, 0, op.Width);
        break;
      case Pattern::kAmPm:
        out = PutName(out, o.AmPm[f.hour < 12 ? 0 : 1]);
        break;
      case Pattern::kEra:
        out = PutName(out, o.Era);
        break;
      default:
        break;
    }
  }
  return out;
}

inline char16_t* PutGlueText(char16_t* out, const char16_t* text, uint8_t length) {
  std::memcpy(out, text, length * sizeof(char16_t));
  return out + length;
}

char16_t* RunDateTime(char16_t* out, const Pattern& date, const Fields& f,
                      const strEnvDateTimeOptions& o) {
  const strDateTimeGlue& g = o.Glue;
  const Pattern& first = g.TimeFirst ? o.Time : date;
  const Pattern& second = g.TimeFirst ? date : o.Time;
  out = PutGlueText(out, g.Text, g.BeforeLength);
  out = RunPattern(out, first, f, o);
  out = PutGlueText(out, g.Text + g.BeforeLength, g.BetweenLength);
  out = RunPattern(out, second, f, o);
  return PutGlueText(out, g.Text + g.BeforeLength + g.BetweenLength, g.AfterLength);
}

bool DateFields(strDate date, Fields& f) {
  if (date.day == 0 || !CheckDate(date)) return false;
  f.year = date.year;
  f.month = date.month;
  f.day = date.day;
  f.hour = 0;
  f.minute = 0;
  f.weekday = static_cast<uint8_t>(GetDayCount(date) % 7);
  return true;
}

bool DateTimeFields(const strDateTime& dt, Fields& f) {
  if (dt.hour > 23 || dt.minute > 59 || !DateFields(dt, f)) return false;
  f.hour = dt.hour;
  f.minute = dt.minute;
  return true;
}

bool ValueFields(uint32_t value, Fields& f) {
  if (value > kMaxDateTime) return false;
  XDateTime d;
  d.SetDateTime(value);
  f.year = d.GetYear();
  f.month = d.GetMonth();
  f.day = d.GetDay();
  f.hour = d.GetHour();
  f.minute = d.GetMinute();
  f.weekday = static_cast<uint8_t>(value / kMinutesPerDay % 7);
  return true;
}

bool WriteText(XIO& out, const char16_t* begin, const char16_t* end) {
  if (end == nullptr) {
    out.SetSafeErrorCode(kErrOutOfRange);
    return false;
  }
  return out._Write(begin, static_cast<uint32_t>((end - begin) * sizeof(char16_t)));
}

// --- Reading --------------------------------------------------------------------

inline bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\u00A0' || c == u'\u2009' || c == u'\u202F';
}

inline char16_t Fold(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  return platform::ToLower(c);
}

// The length of `name` when the text starts with it (ignoring case), else 0.
size_t MatchName(const char16_t* text, const strDateName& name) {
  if (name.Length == 0) return 0;
  for (size_t i = 0; i < name.Length; ++i) {
    if (text[i] == 0 || Fold(text[i]) != Fold(name.Text[i])) return 0;
  }
  return name.Length;
}

// The index of the longest of `count` names that the text starts with; -1 when
// none does. `length` gets its length.
int LongestName(const char16_t* text, const strDateName* names, int count, size_t& length) {
  int best = -1;
  length = 0;
  for (int i = 0; i < count; ++i) {
    const size_t n = MatchName(text, names[i]);
    if (n > length) {
      length = n;
      best = i;
    }
  }
  return best;
}

// Matches literal text; white space in it matches any run of blanks.
bool MatchLiteral(const char16_t*& p, const char16_t* lit, size_t length) {
  const char16_t* s = p;
  for (size_t i = 0; i < length;) {
    if (IsBlank(lit[i])) {
      while (i < length && IsBlank(lit[i])) ++i;
      while (IsBlank(*s)) ++s;
    } else {
      if (*s == 0 || *s != lit[i]) return false;
      ++s;
      ++i;
    }
  }
  p = s;
  return true;
}

bool IsNumberKind(uint8_t kind) {
  switch (kind) {
    case Pattern::kYear:
    case Pattern::kMonth:
    case Pattern::kDay:
    case Pattern::kHour23:
    case Pattern::kHour24:
    case Pattern::kHour12:
    case Pattern::kHour11:
    case Pattern::kMinute:
    case Pattern::kSecond:
      return true;
    default:
      return false;
  }
}

// Reads between 1 and `most` digits, or exactly `exact` when it is not 0.
bool ReadNumber(const char16_t*& p, unsigned most, unsigned exact, unsigned& value) {
  const unsigned limit = exact != 0 ? exact : most;
  unsigned n = 0;
  unsigned v = 0;
  while (n < limit && p[n] >= u'0' && p[n] <= u'9') v = v * 10 + (p[n++] - u'0');
  if (n == 0 || (exact != 0 && n != exact)) return false;
  p += n;
  value = v;
  return true;
}

// What a pattern read; -1 for a field it did not hold.
struct Parsed {
  int year = -1, month = -1, day = -1, weekday = -1;
  int hour = -1, minute = -1, ampm = -1;
  uint8_t hourKind = Pattern::kHour23;
};

bool ReadPattern(const char16_t*& text, const Pattern& pat, const strEnvDateTimeOptions& o,
                 Parsed& r) {
  const char16_t* p = text;
  for (uint8_t i = 0; i < pat.OpCount; ++i) {
    const Pattern::Op op = pat.Ops[i];
    if (op.Kind == Pattern::kLiteral) {
      if (!MatchLiteral(p, pat.Text + op.Offset, op.Length)) return false;
      continue;
    }
    if (IsNumberKind(op.Kind)) {
      const bool packed = i + 1 < pat.OpCount && IsNumberKind(pat.Ops[i + 1].Kind);
      const unsigned most = op.Kind == Pattern::kYear ? 4 : 2;
      unsigned v;
      if (!ReadNumber(p, most, packed ? (op.Width > 1 ? op.Width : 1) : 0, v)) return false;
      switch (op.Kind) {
        case Pattern::kYear:
          r.year = static_cast<int>(v);
          break;
        case Pattern::kMonth:
          r.month = static_cast<int>(v);
          break;
        case Pattern::kDay:
          r.day = static_cast<int>(v);
          break;
        case Pattern::kMinute:
          r.minute = static_cast<int>(v);
          break;
        case Pattern::kSecond:
          if (v > 59) return false;
          break;
        default:
          r.hour = static_cast<int>(v);
          r.hourKind = op.Kind;
          break;
      }
      continue;
    }
    size_t length = 0;
    int index = -1;
    switch (op.Kind) {
      case Pattern::kMonthName:
      case Pattern::kStandaloneName: {
        const strDateName* sets[4] = {o.Months, o.ShortMonths, o.StandaloneMonths,
                                      o.StandaloneShortMonths};
        for (const strDateName* set : sets) {
          size_t n;
          const int k = LongestName(p, set, 12, n);
          if (n > length) {
            length = n;
            index = k;
          }
        }
        r.month = index + 1;
        break;
      }
      case Pattern::kWeekdayName: {
        size_t n;
        const int k = LongestName(p, o.Weekdays, 7, n);
        const int s = LongestName(p, o.ShortWeekdays, 7, length);
        index = n > length ? k : s;
        if (n > length) length = n;
        r.weekday = index;
        break;
      }
      case Pattern::kAmPm:
        index = r.ampm = LongestName(p, o.AmPm, 2, length);
        break;
      case Pattern::kEra:
        index = LongestName(p, &o.Era, 1, length);
        break;
      default:
        return false;
    }
    if (index < 0) return false;
    p += length;
  }
  text = p;
  return true;
}

// Checks and stores the date part of a reading.
bool TakeDate(const Parsed& r, strDate& date) {
  if (r.year < 1 || r.month < 1 || r.day < 1 || r.year > kLastYear || r.month > 12 || r.day > 31)
    return false;
  const strDate d(static_cast<uint16_t>(r.year), static_cast<uint8_t>(r.month),
                  static_cast<uint8_t>(r.day));
  if (!CheckDate(d)) return false;
  if (r.weekday >= 0 && GetDayCount(d) % 7 != static_cast<uint32_t>(r.weekday)) return false;
  date = d;
  return true;
}

bool TakeTime(const Parsed& r, uint8_t& hour, uint8_t& minute) {
  if (r.hour < 0 || r.minute < 0 || r.minute > 59) return false;
  int h = r.hour;
  switch (r.hourKind) {
    case Pattern::kHour23:
      if (h > 23) return false;
      break;
    case Pattern::kHour24:
      if (h < 1 || h > 24) return false;
      h %= 24;
      break;
    default:  // 12-hour forms need the marker
      if (r.ampm < 0 || h > 12 || (r.hourKind == Pattern::kHour12 && h < 1) ||
          (r.hourKind == Pattern::kHour11 && h > 11))
        return false;
      h = h % 12 + (r.ampm == 1 ? 12 : 0);
      break;
  }
  hour = static_cast<uint8_t>(h);
  minute = static_cast<uint8_t>(r.minute);
  return true;
}

const char16_t* SkipSpaces(const char16_t* text) {
  while (*text == u' ') ++text;
  return text;
}

constexpr uint32_t kFormOrder[kDateFormCount] = {kDateNumeric,
                                                 kDateShortMonth,
                                                 kDateLongMonth,
                                                 kDateNumeric | kDateWeekday,
                                                 kDateShortMonth | kDateWeekday,
                                                 kDateLongMonth | kDateWeekday};

bool GlueIsBlank(const strDateTimeGlue& g) {
  if (g.BetweenLength == 0) return false;
  for (uint8_t i = 0; i < g.BetweenLength; ++i) {
    if (!IsBlank(g.Text[g.BeforeLength + i])) return false;
  }
  return true;
}

// Reads one date-time with the date in `form`.
bool ReadDateTime(const char16_t*& text, uint32_t form, const strEnvDateTimeOptions& o,
                  strDateTime& out) {
  const strDateTimeGlue& g = o.Glue;
  const Pattern& date = o.DatePattern(form);
  const Pattern& first = g.TimeFirst ? o.Time : date;
  const Pattern& second = g.TimeFirst ? date : o.Time;
  const char16_t* p = text;
  Parsed r;
  if (!MatchLiteral(p, g.Text, g.BeforeLength) || !ReadPattern(p, first, o, r)) return false;
  const char16_t* between = g.Text + g.BeforeLength;
  if ((*p == u'T' || *p == u't') && GlueIsBlank(g)) {
    ++p;
  } else if (!MatchLiteral(p, between, g.BetweenLength)) {
    return false;
  }
  if (!ReadPattern(p, second, o, r) || !MatchLiteral(p, between + g.BetweenLength, g.AfterLength))
    return false;
  strDate d;
  uint8_t hour, minute;
  if (!TakeDate(r, d) || !TakeTime(r, hour, minute)) return false;
  out = strDateTime(d.year, d.month, d.day, hour, minute);
  text = p;
  return true;
}

}  // namespace

// --- Formatting -----------------------------------------------------------------

char16_t* _DateToString(char16_t* out, strDate date, const strEnvDateTimeOptions& options) {
  return _DateToStringEx(out, date, kDateNumeric, options);
}

char16_t* _DateToStringEx(char16_t* out, strDate date, uint32_t form,
                          const strEnvDateTimeOptions& options) {
  Fields f;
  if (!DateFields(date, f)) return nullptr;
  return RunPattern(out, options.DatePattern(form), f, options);
}

char16_t* _DateToStringEx(char16_t* out, uint32_t value, uint32_t form,
                          const strEnvDateTimeOptions& options) {
  Fields f;
  if (!ValueFields(value, f)) return nullptr;
  return RunPattern(out, options.DatePattern(form), f, options);
}

char16_t* _TimeToString(char16_t* out, uint8_t hour, uint8_t minute,
                        const strEnvDateTimeOptions& options) {
  if (hour > 23 || minute > 59) return nullptr;
  const Fields f{1, 1, 1, hour, minute, 0};
  return RunPattern(out, options.Time, f, options);
}

char16_t* _DateTimeToString(char16_t* out, const strDateTime& dateTime,
                            const strEnvDateTimeOptions& options) {
  return _DateTimeToStringEx(out, dateTime, kDateNumeric, options);
}

char16_t* _DateTimeToString(char16_t* out, uint32_t value, const strEnvDateTimeOptions& options) {
  return _DateTimeToStringEx(out, value, kDateNumeric, options);
}

char16_t* _DateTimeToStringEx(char16_t* out, const strDateTime& dateTime, uint32_t form,
                              const strEnvDateTimeOptions& options) {
  Fields f;
  if (!DateTimeFields(dateTime, f)) return nullptr;
  return RunDateTime(out, options.DatePattern(form), f, options);
}

char16_t* _DateTimeToStringEx(char16_t* out, uint32_t value, uint32_t form,
                              const strEnvDateTimeOptions& options) {
  Fields f;
  if (!ValueFields(value, f)) return nullptr;
  return RunDateTime(out, options.DatePattern(form), f, options);
}

bool XDateToString(XIO& out, strDate date, const strEnvDateTimeOptions& options) {
  return XDateToStringEx(out, date, kDateNumeric, options);
}

bool XDateToStringEx(XIO& out, strDate date, uint32_t form, const strEnvDateTimeOptions& options) {
  char16_t text[kMaxDateTimeText];
  return WriteText(out, text, _DateToStringEx(text, date, form, options));
}

bool XTimeToString(XIO& out, uint8_t hour, uint8_t minute, const strEnvDateTimeOptions& options) {
  char16_t text[kMaxDateTimeText];
  return WriteText(out, text, _TimeToString(text, hour, minute, options));
}

bool XDateTimeToString(XIO& out, const strDateTime& dateTime,
                       const strEnvDateTimeOptions& options) {
  char16_t text[kMaxDateTimeText];
  return WriteText(out, text, _DateTimeToString(text, dateTime, options));
}

bool XDateTimeToString(XIO& out, uint32_t value, const strEnvDateTimeOptions& options) {
  return XDateTimeToStringEx(out, value, kDateNumeric, options);
}

bool XDateTimeToStringEx(XIO& out, uint32_t value, uint32_t form,
                         const strEnvDateTimeOptions& options) {
  char16_t text[kMaxDateTimeText];
  return WriteText(out, text, _DateTimeToStringEx(text, value, form, options));
}

// --- Parsing --------------------------------------------------------------------

const char16_t* _StringToDate(const char16_t* text, strDate& date,
                              const strEnvDateTimeOptions& options) {
  for (const uint32_t form : kFormOrder) {
    if (const char16_t* end = _StringToDateEx(text, date, form, options)) return end;
  }
  return nullptr;
}

const char16_t* _StringToDateEx(const char16_t* text, strDate& date, uint32_t form,
                                const strEnvDateTimeOptions& options) {
  if (text == nullptr) return nullptr;
  const char16_t* p = SkipSpaces(text);
  Parsed r;
  if (!ReadPattern(p, options.DatePattern(form), options, r) || !TakeDate(r, date)) return nullptr;
  return p;
}

const char16_t* _StringToTime(const char16_t* text, uint8_t& hour, uint8_t& minute,
                              const strEnvDateTimeOptions& options) {
  if (text == nullptr) return nullptr;
  const char16_t* p = SkipSpaces(text);
  Parsed r;
  if (!ReadPattern(p, options.Time, options, r) || !TakeTime(r, hour, minute)) return nullptr;
  return p;
}

const char16_t* _StringToDateTime(const char16_t* text, strDateTime& dateTime,
                                  const strEnvDateTimeOptions& options) {
  if (text == nullptr) return nullptr;
  for (const uint32_t form : kFormOrder) {
    const char16_t* p = SkipSpaces(text);
    if (ReadDateTime(p, form, options, dateTime)) return p;
  }
  return nullptr;
}

const char16_t* _StringToDateTimeValue(const char16_t* text, uint32_t& value,
                                       const strEnvDateTimeOptions& options) {
  strDateTime dt;
  const char16_t* end = _StringToDateTime(text, dt, options);
  if (end != nullptr) value = GetDateTime(dt);
  return end;
}

// --- Durations ------------------------------------------------------------------

void XInitProcTime() {
  internal::ProcTimeFrequency();
}

uint64_t XGetProcTime() {
  return internal::ProcTimeNow();
}

uint64_t XGetProcTimeFrequency() {
  // The timer falls back to the millisecond clock when the counter is unusable.
  const uint64_t f = internal::ProcTimeFrequency();
  return f > 1 ? f : 1000;
}

char16_t* _DurationToString(char16_t* out, uint64_t ticks, uint64_t frequency, uint8_t decimals,
                            const strEnvDateTimeOptions& options) {
  if (frequency == 0) return nullptr;
  if (decimals > 3) decimals = 3;
  const uint64_t seconds = ticks / frequency;
  static constexpr uint32_t kScale[4] = {1, 10, 100, 1000};
  // The fraction exactly while remainder * 1000 fits; clocks faster than
  // 1.8e16 ticks per second (none exist) get it from a scaled-down frequency.
  const uint64_t rest = ticks % frequency;
  uint32_t fraction;
  if (frequency <= UINT64_MAX / 1000) {
    fraction = static_cast<uint32_t>(rest * kScale[decimals] / frequency);
  } else {
    const uint64_t f = rest / (frequency / kScale[decimals]);
    fraction = static_cast<uint32_t>(f < kScale[decimals] ? f : kScale[decimals] - 1);
  }
  const uint64_t hours = seconds / 3600;
  const auto minutes = static_cast<unsigned>(seconds / 60 % 60);
  const auto secs = static_cast<unsigned>(seconds % 60);
  if (hours != 0) {
    char16_t digits[20];
    char16_t* end = digits + 20;
    char16_t* d = end;
    for (uint64_t h = hours; h != 0; h /= 10) *--d = static_cast<char16_t>(u'0' + h % 10);
    std::memcpy(out, d, (end - d) * sizeof(char16_t));
    out += end - d;
    *out++ = options.TimeSeparator;
    out = Put2(out, minutes);
  } else {
    out = PutSmall(out, minutes, 1);
  }
  *out++ = options.TimeSeparator;
  out = Put2(out, secs);
  if (decimals != 0) {
    *out++ = options.DecimalPoint;
    for (uint8_t i = decimals; i-- > 0;) {
      out[i] = static_cast<char16_t>(u'0' + fraction / kScale[decimals - 1 - i] % 10);
    }
    out += decimals;
  }
  return out;
}

bool XDurationToString(XIO& out, uint64_t ticks, uint64_t frequency, uint8_t decimals,
                       const strEnvDateTimeOptions& options) {
  char16_t text[32];
  return WriteText(out, text, _DurationToString(text, ticks, frequency, decimals, options));
}

bool XProcTimeToString(XIO& out, uint64_t ticks, uint8_t decimals,
                       const strEnvDateTimeOptions& options) {
  return XDurationToString(out, ticks, XGetProcTimeFrequency(), decimals, options);
}

const char16_t* _StringToDuration(const char16_t* text, uint64_t& milliseconds,
                                  const strEnvDateTimeOptions& options) {
  if (text == nullptr) return nullptr;
  const char16_t* p = SkipSpaces(text);
  // The leading part may be large; the parts after a separator are below 60.
  uint64_t parts[3] = {0, 0, 0};
  int count = 0;
  for (;;) {
    const char16_t* start = p;
    uint64_t v = 0;
    while (*p >= u'0' && *p <= u'9') {
      if (v > (UINT64_MAX - 9) / 10) return nullptr;
      v = v * 10 + (*p++ - u'0');
    }
    if (p == start || (count > 0 && (p - start > 2 || v > 59))) {
      if (count == 0) return nullptr;
      p = start - 1;  // leave the separator unread
      break;
    }
    parts[count++] = v;
    if (count == 3 || *p != options.TimeSeparator) break;
    ++p;
  }
  uint64_t seconds = parts[0];
  for (int i = 1; i < count; ++i) {
    if (__builtin_mul_overflow(seconds, 60, &seconds) ||
        __builtin_add_overflow(seconds, parts[i], &seconds))
      return nullptr;
  }
  uint32_t fraction = 0;
  if (*p == options.DecimalPoint && p[1] >= u'0' && p[1] <= u'9') {
    ++p;
    for (int i = 0; i < 3; ++i) {
      fraction *= 10;
      if (*p >= u'0' && *p <= u'9') fraction += static_cast<uint32_t>(*p++ - u'0');
    }
    while (*p >= u'0' && *p <= u'9') ++p;
  }
  uint64_t ms;
  if (__builtin_mul_overflow(seconds, 1000, &ms) || __builtin_add_overflow(ms, fraction, &ms))
    return nullptr;
  milliseconds = ms;
  return p;
}

}  // namespace tavi
