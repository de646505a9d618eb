// Moments.
#include "tests/definition/moments.h"

#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

// 32-bit processors do without the definitions, which count in 128-bit integers.
#ifdef __SIZEOF_INT128__
#define VEK_DEFINED_BY(f) bind(f)
#else
#define VEK_DEFINED_BY(f) Call()
#endif

namespace vek::test {
namespace {

using definition::MomentState;

constexpr Check otherKind = {vekStsContextMatchErr};

int stateSize() {
  int size = 0;
  vekiGetSpecSize_Moments_8u(&size);
  return size;
}

/// A state somewhere in memory that is aligned to 4, and passes it.
class DrawnState {
 public:
  explicit DrawnState(Case& c)
      : case_(c),
        offset_(c.random.in(0, 3)),
        memory_(static_cast<size_t>(offset_ + stateSize()) / 4 + 1) {
    vekiInit_Moments_8u(address());
  }
  MomentState words() { return MomentState(address()); }

  void pass(Use use) {
    const auto size = static_cast<size_t>(offset_ + stateSize());
    const int block = case_.object(use, memory_.data(), size, 4, 0);
    const size_t tag = static_cast<size_t>(MomentState::tagWord + (offset_ + 3) / 4);
    for (Vek32u other : {0u, 33u, 30u}) {
      case_.refuseEntry(block, tag, other, vekStsContextMatchErr);
    }
    case_.pointer(block, 1, offset_);
  }

 private:
  VekiMomentState* address() {
    return reinterpret_cast<VekiMomentState*>(reinterpret_cast<Vek8u*>(memory_.data()) + offset_);
  }

  Case& case_;
  int offset_;
  std::vector<Vek32u> memory_;
};

template <int channels, class F>
Record sums(const char* name, F f, Call define) {
  const auto draw = [](Case& c) {
    VekiSize roi = {c.random.size(300), c.random.in(1, 20)};
    if (c.limits()) roi = c.sizeAcrossSeams(2048, 1024);
    const int bytes = roi.width * channels;
    const int step = c.step(bytes, roi.height, {1, false});
    c.pointer(c.memory(Use::in, footprint::pixels(roi, channels, step)));
    c.stride(step, bytes);
    c.pair(roi.width, roi.height, {vekStsSizeErr, {0, -1, INT_MIN, 16385, INT_MAX}});
    DrawnState(c).pass(Use::inOut);
  };
  const auto prepare = [](Arguments& a) {
    a.image(a.plane(channels * a.size.width, a.size.height));
    a.roi();
    auto* const state = reinterpret_cast<VekiMomentState*>(a.keep(std::vector<Vek32u>(100)));
    vekiInit_Moments_8u(state);
    a.pointer(state);
  };
  return with(
      {name, bind(f), draw, {}, define, {pointers, otherKind, sizes, steps, {vekStsStrideErr}}},
      {{"", prepare}});
}

/// Sums of a few pixels, which may be as heavy as a whole image.
void drawSums(Case& c, MomentState state, int channel) {
  const int count = c.random.in(0, 3), bits = c.random.in(1, 33), side = c.random.in(0, 14);
  Int128 sum[10] = {};
  for (int n = 0; n < count; ++n) {
    const auto weight = static_cast<int64_t>(c.random.bits() >> (64 - bits));
    const int at[2] = {c.random.in(0, (1 << side) - 1), c.random.in(0, (1 << side) - 1)};
    for (int i = 0; i < 10; ++i) {
      Int128 term = weight;
      for (int k = 0; k < 2; ++k) {
        for (int times = 0; times < definition::orders[i][k]; ++times) term = term * at[k];
      }
      sum[i] = sum[i] + term;
    }
  }
  for (int i = 0; i < 10; ++i) state.set(channel, i, sum[i]);
}

template <class... A>
Record reader(const char* name, VekStatus (*f)(A...), Call define, int results) {
  constexpr bool hasOrigin = sizeof...(A) == 4;
  const auto draw = [=](Case& c) {
    DrawnState state(c);
    const int channels = c.random.chance(50) ? 1 : 3;
    for (int i = 0; i < channels; ++i) drawSums(c, state.words(), i);
    state.words().setCount(channels);
    state.pass(Use::in);
    c.number(c.random.in(0, channels - 1), {vekStsBadArgErr, {-1, channels, INT_MIN, INT_MAX}});
    if (hasOrigin) {
      constexpr int most = 1 << 30;
      const int places[] = {0, 1, -1, -100, most, -most};
      const int y = c.random.chance(50) ? c.random.of(places) : c.random.in(-most, most);
      const int x = c.random.of(places);
      c.pair(x, y, {vekStsBadArgErr, {most + 1, -most - 1, INT_MIN, INT_MAX}});
    }
    c.pointer(c.memory(Use::out, {8 * results, 1, 0}, 1, 8));
  };
  const auto prepare = [=](Arguments& a) {
    auto* const state = reinterpret_cast<VekiMomentState*>(a.keep(std::vector<Vek32u>(100)));
    vekiInit_Moments_8u(state);
    const Arguments::Plane image = a.plane(a.size.width, a.size.height);
    vekiMoments_8u_C1R(image.data, image.step, a.size, state);
    a.pointer(state);
    a.number(0);
    if (hasOrigin) a.pair(-100, 1000);
    a.pointer(a.keep(std::vector<Vek64f>(10)));
  };
  return with({name, bind(f), draw, {}, define, {pointers, otherKind, {vekStsBadArgErr}}},
              {{"", prepare}});
}

VekStatus initAndFree(const Value* v) {
  VekiMomentState* state = nullptr;
  const VekStatus status = vekiInitAlloc_Moments_8u(as<VekiMomentState**>(v[0]));
  if (status < 0) return status;
  memcpy(&state, v[0].pointer, sizeof state);
  memset(v[0].pointer, 0, sizeof state);
  const VekStatus released = vekiFree_Moments_8u(state);
  return vekiFree_Moments_8u(nullptr) == vekStsNullPtrErr ? released : vekStsBadArgErr;
}

template <class T>
void prepareResult(Arguments& a) {
  a.pointer(a.keep(std::vector<T>(100)));
}

}  // namespace

std::vector<Record> momentsRecords() {
  Record size = {"vekiGetSpecSize_Moments_8u", bind(vekiGetSpecSize_Moments_8u), [](Case& c) {
                   c.pointer(c.memory(Use::out, {sizeof(int), 1, 0}, 1, sizeof(int)));
                 }};
  Record init = {"vekiInit_Moments_8u", bind(vekiInit_Moments_8u), [](Case& c) {
                   const std::vector<Vek8u> memory(static_cast<size_t>(3 + stateSize()), 0xA5);
                   c.pointer(c.object(Use::out, memory.data(), memory.size(), 4, 0), 1,
                             c.random.in(0, 3));
                 }};
  Record alloc = {"vekiInitAlloc_Moments_8u",
                  initAndFree,
                  [](Case& c) {
                    const std::vector<Vek8u> memory(sizeof(void*));
                    c.pointer(c.object(Use::out, memory.data(), memory.size(), 1, 0));
                  },
                  {"vekiFree_Moments_8u"}};
  alloc.allocates = true;
  return {with(size, {{"", prepareResult<int>}}),
          with(init, {{"", prepareResult<Vek32u>}}),
          with(alloc, {{"", prepareResult<void*>}}),
          sums<1>(VEK_NAMED(vekiMoments_8u_C1R), VEK_DEFINED_BY(definition::summed<1>)),
          sums<3>(VEK_NAMED(vekiMoments_8u_C3R), VEK_DEFINED_BY(definition::summed<3>)),
          reader(VEK_NAMED(vekiSpatialMoments_64f), VEK_DEFINED_BY(definition::spatial), 10),
          reader(VEK_NAMED(vekiCentralMoments_64f), VEK_DEFINED_BY(definition::central), 10),
          reader(VEK_NAMED(vekiNormalizedMoments_64f), VEK_DEFINED_BY(definition::normalized), 10),
          reader(VEK_NAMED(vekiHuMoments_64f), VEK_DEFINED_BY(definition::hu), 7)};
}

}  // namespace vek::test
