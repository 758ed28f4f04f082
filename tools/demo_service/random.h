#pragma once
// A small, fast random stream. Every bar draws from its own stream, seeded from the data set's
// seed, the composite, the period and the date, so a bar comes out the same whether it was made by
// `generate` or later by `advance`, and no generator state needs to be kept between runs.
#include <cmath>
#include <cstdint>

namespace corvanet::demo {

inline std::uint64_t SplitMix(std::uint64_t& state) {
  std::uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
  return z ^ (z >> 31);
}

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  Random(std::uint64_t seed, std::uint64_t a, std::uint64_t b = 0, std::uint64_t c = 0) {
    std::uint64_t mix = seed;
    state_ = SplitMix(mix) ^ a;
    state_ = SplitMix(state_) ^ b;
    state_ = SplitMix(state_) ^ c;
  }

  std::uint64_t Next() { return SplitMix(state_); }
  // Uniform in [0, 1).
  double Uniform() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
  double Uniform(double low, double high) { return low + (high - low) * Uniform(); }
  int Below(int bound) { return static_cast<int>(Uniform() * bound); }
  // About standard normal: the sum of four uniforms (16 bits each from one draw), rescaled. Close
  // enough for market noise and several times cheaper than the exact transforms.
  double Normal() {
    const std::uint64_t bits = Next();
    double sum = 0;
    for (int i = 0; i < 4; ++i) sum += static_cast<double>((bits >> (16 * i)) & 0xFFFF);
    return (sum / 65536.0 - 2.0) * 1.7320508075688772;  // variance of the sum is 4/12
  }

 private:
  std::uint64_t state_ = 0;
};

inline double Logistic(double x) {
  return 1.0 / (1.0 + std::exp(-x));
}

inline double Clamp(double x, double low, double high) {
  return x < low ? low : (x > high ? high : x);
}

}  // namespace corvanet::demo
