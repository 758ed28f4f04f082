#include "demo_service/datafile_row.h"

#include <charconv>
#include <cmath>

namespace corvanet::demo {

namespace {

std::string BuildHeader() {
  std::string header =
      "Period,Date,DateText,Open,High,Low,Close,UpperTrendChannel,Pivot,LowerTrendChannel,"
      "UpTrends,NewUpTrends,DownTrends,NewDownTrends,TotalVolume,Advances,Declines,UpVolume,"
      "DownVolume,NewHighs,NewLows,Traded,Unchanged";
  for (const int n : kAverageLengths) header += ",PercentAbove" + std::to_string(n) + "ma";
  for (const int n : kAverageLengths) {
    const std::string ma = std::to_string(n) + "ma";
    header += ",Above" + ma + ",Below" + ma + ",Equal" + ma;
  }
  header +=
      ",QNewHighs,QNewLows,NewHighs1stDay,NewLows1stDay,QNewHighs1stDay,QNewLows1stDay,"
      "EqWtOpen,EqWtHigh,EqWtLow,EqWtClose,TradeVolume";
  for (int i = 2; i <= 15; ++i) header += ",FV" + std::to_string(i);
  return header;
}

}  // namespace

const std::string& DatafileHeader() {
  static const std::string header = BuildHeader();
  return header;
}

void RowText::Integer(std::int64_t value) {
  // Two digits per division, written backwards into a scratch buffer.
  static constexpr char kPairs[] =
      "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
      "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
      "8081828384858687888990919293949596979899";
  std::uint64_t u = static_cast<std::uint64_t>(value);
  if (value < 0) {
    *end_++ = '-';
    u = 0 - u;
  }
  char scratch[20];
  char* p = scratch + sizeof scratch;
  while (u >= 100) {
    const std::size_t pair = static_cast<std::size_t>(u % 100) * 2;
    u /= 100;
    *--p = kPairs[pair + 1];
    *--p = kPairs[pair];
  }
  if (u >= 10) {
    *--p = kPairs[u * 2 + 1];
    *--p = kPairs[u * 2];
  } else {
    *--p = static_cast<char>('0' + u);
  }
  // At most 20 characters: a plain loop beats a call to memcpy here.
  while (p < scratch + sizeof scratch) *end_++ = *p++;
}

void RowText::Hundredths(double value) {
  std::int64_t cents = RoundToWhole(value * 100.0);
  if (cents < 0) {
    *end_++ = '-';
    cents = -cents;
  }
  Integer(cents / 100);
  const int fraction = static_cast<int>(cents % 100);
  if (fraction == 0) return;
  *end_++ = '.';
  *end_++ = static_cast<char>('0' + fraction / 10);
  if (fraction % 10 != 0) *end_++ = static_cast<char>('0' + fraction % 10);
}

std::string_view RowText::Format(const Row& row) {
  end_ = buffer_;
  *end_++ = row.period;
  Comma();
  Integer(row.date);
  Comma();
  const int month = row.date / 100 % 100, day = row.date % 100;
  *end_++ = static_cast<char>('0' + month / 10);
  *end_++ = static_cast<char>('0' + month % 10);
  *end_++ = '/';
  *end_++ = static_cast<char>('0' + day / 10);
  *end_++ = static_cast<char>('0' + day % 10);
  *end_++ = '/';
  Integer(row.date / 10000);
  auto cents = [this](double value) {
    Comma();
    Hundredths(value);
  };
  auto whole = [this](double value) {
    Comma();
    Integer(RoundToWhole(value));
  };
  for (const double price :
       {row.open, row.high, row.low, row.close, row.upper_channel, row.pivot, row.lower_channel}) {
    cents(price);
  }
  whole(row.up_trends);
  whole(row.new_up_trends);
  whole(row.down_trends);
  whole(row.new_down_trends);
  whole(row.total_volume);
  whole(row.advances);
  whole(row.declines);
  whole(row.up_volume);
  whole(row.down_volume);
  whole(row.new_highs);
  whole(row.new_lows);
  whole(row.traded);
  whole(row.unchanged);
  for (const double percent : row.percent_above) cents(percent);
  for (std::size_t i = 0; i < kAverageLengths.size(); ++i) {
    whole(row.above[i]);
    whole(row.below[i]);
    whole(row.equal[i]);
  }
  whole(row.q_new_highs);
  whole(row.q_new_lows);
  whole(row.new_highs_first_day);
  whole(row.new_lows_first_day);
  whole(row.q_new_highs_first_day);
  whole(row.q_new_lows_first_day);
  for (const double price : {row.eq_open, row.eq_high, row.eq_low, row.eq_close}) cents(price);
  whole(row.trade_volume);
  for (const double value : row.free_values) cents(value);
  return {buffer_, static_cast<std::size_t>(end_ - buffer_)};
}

}  // namespace corvanet::demo
