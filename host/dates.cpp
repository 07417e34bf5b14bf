// Julian day numbers and their text forms.
#include <cstring>

#include "kovo/host_text.h"

namespace {

bool isLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month) {
  static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeapYear(year) ? 29 : days[month - 1];
}

// Writes `value` as exactly `width` decimal digits (the lowest ones, zero-padded).
void putDigits(char* out, int width, int value) {
  for (int i = width - 1; i >= 0; i--) {
    out[i] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
}

}  // namespace

int32_t dateEncode(int year, int month, int day) {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 ||
      day > daysInMonth(year, month)) {
    return 0;
  }
  int a = (14 - month) / 12;
  int y = year + 4800 - a;
  int m = month + 12 * a - 3;
  return day + (153 * m + 2) / 5 + 365 * y + y / 4 - y / 100 + y / 400 - 32045;
}

void dateDecode(int32_t julian, int* year, int* month, int* day) {
  if (julian <= 0) {
    *year = *month = *day = 0;
    return;
  }
  int64_t a = int64_t{julian} + 32044;
  int64_t b = (4 * a + 3) / 146097;
  int64_t c = a - 146097 * b / 4;
  int64_t d = (4 * c + 3) / 1461;
  int64_t e = c - 1461 * d / 4;
  int64_t m = (5 * e + 2) / 153;
  *day = static_cast<int>(e - (153 * m + 2) / 5 + 1);
  *month = static_cast<int>(m + 3 - 12 * (m / 10));
  *year = static_cast<int>(100 * b + d - 4800 + m / 10);
}

int32_t dateEncStr(const char* yyyymmdd) {
  int parts[3] = {0, 0, 0};
  const int widths[3] = {4, 2, 2};
  const char* p = yyyymmdd;
  for (int i = 0; i < 3; i++) {
    for (int k = 0; k < widths[i]; k++, p++) {
      if (*p < '0' || *p > '9') return 0;
      parts[i] = parts[i] * 10 + (*p - '0');
    }
  }
  return dateEncode(parts[0], parts[1], parts[2]);
}

char* dateDecStr(char* buffer, int32_t julian) {
  int year, month, day;
  dateDecode(julian, &year, &month, &day);
  if (year <= 0) {
    std::memset(buffer, ' ', 8);
  } else {
    putDigits(buffer, 4, year);
    putDigits(buffer + 4, 2, month);
    putDigits(buffer + 6, 2, day);
  }
  buffer[8] = '\0';
  return buffer;
}

char* dateFormat(char* buffer, const char* yyyymmdd, const char* format) {
  bool empty = yyyymmdd[0] == ' ';
  int year = 0, month = 0, day = 0;
  if (!empty) {
    int32_t julian = dateEncStr(yyyymmdd);
    dateDecode(julian, &year, &month, &day);
  }
  size_t length = std::strlen(format);
  size_t i = 0;
  while (i < length) {
    char c = static_cast<char>(format[i] & ~0x20);
    size_t run = 1;
    if (c == 'Y' || c == 'M' || c == 'D') {
      while (i + run < length && static_cast<char>(format[i + run] & ~0x20) == c)
        run++;
      if (empty) {
        std::memset(buffer + i, ' ', run);
      } else {
        putDigits(buffer + i, static_cast<int>(run), c == 'Y' ? year : c == 'M' ? month : day);
      }
    } else {
      buffer[i] = format[i];
    }
    i += run;
  }
  buffer[length] = '\0';
  return buffer;
}
