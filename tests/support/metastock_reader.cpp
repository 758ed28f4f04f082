#include "support/metastock_reader.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>

namespace corvanet::test {

namespace {

std::optional<std::string> Load(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// Little-endian numbers at a byte offset of a record.
std::uint32_t Unsigned(const std::string& data, std::size_t at, int bytes) {
  std::uint32_t value = 0;
  for (int i = bytes - 1; i >= 0; --i) {
    value = value * 256 + static_cast<unsigned char>(data[at + static_cast<std::size_t>(i)]);
  }
  return value;
}
double Mbf(const std::string& data, std::size_t at) {
  return MbfValue(Unsigned(data, at, 4));
}
float Ieee(const std::string& data, std::size_t at) {
  const std::uint32_t word = Unsigned(data, at, 4);
  float value;
  std::memcpy(&value, &word, sizeof value);
  return value;
}
// A text field ending at its first NUL, trailing blanks dropped.
std::string Text(const std::string& data, std::size_t at, std::size_t size) {
  std::string text = data.substr(at, size);
  text = text.substr(0, text.find('\0'));
  return text.substr(0, text.find_last_not_of(' ') + 1);
}
int DateFromCentury(double cyymmdd) {
  return static_cast<int>(std::lround(cyymmdd)) + 19000000;
}

// Bits of the fields a record holds, in the order they are stored.
constexpr std::array<unsigned, 8> kFieldOrder = {0x01, 0x80, 0x20, 0x02, 0x04, 0x08, 0x10, 0x40};
// Where each stored field goes in MetastockBar::values (-1 date, -2 time).
constexpr std::array<int, 8> kValueSlot = {-1, -2, 0, 1, 2, 3, 4, 5};

unsigned BitsOfCount(int fields) {
  switch (fields) {
    case 5:
      return 0x1F;
    case 6:
      return 0x3F;
    case 7:
      return 0x7F;
    default:
      return 0xFF;
  }
}

class Reader {
 public:
  explicit Reader(std::string folder) : folder_(std::move(folder)) {
    if (!folder_.empty() && folder_.back() != '/') folder_ += '/';
  }

  MetastockFolder Read() {
    ReadMaster();
    ReadXmaster();
    std::set<std::string> symbols;
    for (MetastockSecurity& security : result_.securities) {
      if (!symbols.insert(security.symbol).second) Problem("symbol " + security.symbol + " twice");
      ReadBars(security);
    }
    return std::move(result_);
  }

 private:
  void Problem(const std::string& text) { result_.problems.push_back(text); }

  // A whole index file: header plus `count` records, where `count` is what the header says.
  std::optional<std::string> Index(const char* name, std::size_t record, std::size_t count_at) {
    std::optional<std::string> data = Load(folder_ + name);
    if (!data) return data;
    if (data->size() < record || data->size() % record != 0) {
      Problem(std::string(name) + ": size " + std::to_string(data->size()));
      return std::nullopt;
    }
    if (Unsigned(*data, count_at, 2) != data->size() / record - 1) {
      Problem(std::string(name) + ": header count disagrees with the size");
    }
    return data;
  }

  void ReadMaster() {
    const std::optional<std::string> master = Index("MASTER", 53, 0);
    const std::optional<std::string> emaster = Index("EMASTER", 192, 0);
    if (!master) return;
    if (!emaster || emaster->size() / 192 != master->size() / 53) {
      Problem("EMASTER does not list the securities of MASTER");
      return;
    }
    if (emaster->compare(0, 53, *master, 0, 53) != 0) Problem("EMASTER header differs");
    unsigned highest = 0;
    for (std::size_t i = 1; i < master->size() / 53; ++i) {
      const std::size_t m = i * 53, e = i * 192;
      MetastockSecurity s;
      s.index = "MASTER";
      s.file_number = static_cast<int>(Unsigned(*master, m, 1));
      highest = std::max(highest, Unsigned(*master, m, 1));
      s.data_file = "F" + std::to_string(s.file_number) + ".DAT";
      s.fields = static_cast<int>(Unsigned(*master, m + 4, 1));
      s.field_bits = BitsOfCount(s.fields);  // MASTER has no bitset; the count implies it
      s.symbol = Text(*master, m + 36, 14);
      s.name = Text(*emaster, e + 139, 52);
      s.period = (*master)[m + 33];
      s.first_date = DateFromCentury(Mbf(*master, m + 25));
      s.last_date = DateFromCentury(Mbf(*master, m + 29));
      const std::string label = "MASTER record " + std::to_string(i) + " (" + s.symbol + ")";
      if (Unsigned(*master, m + 1, 2) != 101 || Unsigned(*master, m + 3, 1) != 4u * s.fields) {
        Problem(label + ": file type or record length");
      }
      if (Unsigned(*emaster, e + 2, 1) != Unsigned(*master, m, 1) ||
          Text(*emaster, e + 11, 14) != s.symbol || (*emaster)[e + 60] != s.period ||
          static_cast<int>(Unsigned(*emaster, e + 6, 1)) != s.fields ||
          Unsigned(*emaster, e + 7, 1) != s.field_bits) {
        Problem(label + ": EMASTER record differs");
      }
      if (Text(*master, m + 7, 16) != Text(*emaster, e + 32, 16) ||
          Text(*master, m + 7, 16) != Text(s.name, 0, 16)) {
        Problem(label + ": short names differ from the long name");
      }
      if (DateFromCentury(Ieee(*emaster, e + 64)) != s.first_date ||
          DateFromCentury(Ieee(*emaster, e + 72)) != s.last_date ||
          static_cast<int>(Unsigned(*emaster, e + 126, 4)) != s.first_date) {
        Problem(label + ": EMASTER dates differ");
      }
      result_.securities.push_back(std::move(s));
    }
    if (Unsigned(*master, 2, 1) != highest) Problem("MASTER: highest file number");
  }

  void ReadXmaster() {
    const std::optional<std::string> x = Index("XMASTER", 150, 10);
    if (!x) return;
    if (x->compare(0, 4, "\x5D\xFEXM") != 0) Problem("XMASTER: header mark");
    if (Unsigned(*x, 14, 2) != Unsigned(*x, 10, 2)) Problem("XMASTER: the two counts differ");
    unsigned highest = 255;
    for (std::size_t i = 1; i < x->size() / 150; ++i) {
      const std::size_t r = i * 150;
      MetastockSecurity s;
      s.index = "XMASTER";
      s.file_number = static_cast<int>(Unsigned(*x, r + 65, 2));
      highest = std::max(highest, Unsigned(*x, r + 65, 2));
      s.data_file = "F" + std::to_string(s.file_number) + ".MWD";
      s.symbol = Text(*x, r + 1, 14);
      s.name = Text(*x, r + 16, 45);
      s.period = (*x)[r + 62];
      s.first_date = static_cast<int>(Unsigned(*x, r + 108, 4));
      s.last_date = static_cast<int>(Unsigned(*x, r + 116, 4));
      s.field_bits = Unsigned(*x, r + 70, 1);
      for (unsigned bit : kFieldOrder) s.fields += (s.field_bits & bit) != 0 ? 1 : 0;
      if ((*x)[r] != '\x01' || s.file_number <= 255) {
        Problem("XMASTER record " + std::to_string(i) + ": mark or file number");
      }
      result_.securities.push_back(std::move(s));
    }
    if (Unsigned(*x, 18, 2) != highest + 1) Problem("XMASTER: next free file number");
  }

  void ReadBars(MetastockSecurity& s) {
    const std::string label = s.data_file + " (" + s.symbol + ")";
    const std::optional<std::string> data = Load(folder_ + s.data_file);
    const std::size_t length = 4 * static_cast<std::size_t>(s.fields);
    if (!data || length == 0 || data->size() < length || data->size() % length != 0) {
      Problem(label + ": missing or not whole records");
      return;
    }
    if (Unsigned(*data, 2, 2) != data->size() / length) Problem(label + ": header count");
    for (std::size_t at = length; at < data->size(); at += length) {
      MetastockBar bar;
      std::size_t field = at;
      for (std::size_t k = 0; k < kFieldOrder.size(); ++k) {
        if ((s.field_bits & kFieldOrder[k]) == 0) continue;
        const double value = Mbf(*data, field);
        field += 4;
        if (kValueSlot[k] == -1) bar.date = DateFromCentury(value);
        if (kValueSlot[k] >= 0) bar.values[static_cast<std::size_t>(kValueSlot[k])] = value;
      }
      if (!s.bars.empty() && bar.date <= s.bars.back().date) Problem(label + ": dates not rising");
      s.bars.push_back(bar);
    }
    if (s.bars.empty() || s.bars.front().date != s.first_date ||
        s.bars.back().date != s.last_date) {
      Problem(label + ": first or last date differs from the index");
    }
  }

  std::string folder_;
  MetastockFolder result_;
};

}  // namespace

double MbfValue(std::uint32_t word) {
  const int exponent = static_cast<int>(word >> 24);
  if (exponent == 0) return 0.0;
  // 0.1m (binary) times 2^(exponent - 128), with the hidden leading bit made explicit.
  const double mantissa = static_cast<double>((word & 0x7FFFFFu) | 0x800000u);
  const double magnitude = std::ldexp(mantissa, exponent - 128 - 24);
  return (word & 0x800000u) != 0 ? -magnitude : magnitude;
}

MetastockFolder ReadMetastockFolder(const std::string& folder) {
  return Reader(folder).Read();
}

}  // namespace corvanet::test
