// Transforms.
#include "tests/definition/transform.h"

#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

namespace vek::test {
namespace {

// ---- Fourier ------------------------------------------------------------------------------------

struct Orders {
  int x, y;

  int width() const { return 1 << x; }
  int height() const { return 1 << y; }
  int spectrumBytes() const { return 8 * (width() / 2 + 1); }
};

constexpr int lowestOrder = 0, highestOrder = 10;

const Refused refusedOrders = {vekStsFftOrderErr, {-1, 11, INT_MIN, INT_MAX}};

Orders drawOrders(Case& c) {
  Random& random = c.random;
  if (!c.limits()) return {random.in(0, 5), random.in(0, 5)};
  const int high = random.in(6, highestOrder), low = random.in(0, highestOrder - high + 2);
  return random.chance(50) ? Orders{high, low} : Orders{low, high};
}

int bufferBytes(Orders orders) {
  int specBytes = 0, bytes = 0;
  vekiGetSpecSize_RealFFT_32s(orders.x, orders.y, &specBytes, &bytes);
  return bytes;
}

/// A spec at any address.
void drawSpec(Case& c, Orders orders) {
  const auto offset = static_cast<size_t>(c.random.in(0, 3));
  int specBytes = 0, bytes = 0;
  vekiGetSpecSize_RealFFT_32s(orders.x, orders.y, &specBytes, &bytes);
  std::vector<Vek32u> memory(static_cast<size_t>(specBytes) / 4 + 2);
  void* const at = reinterpret_cast<Vek8u*>(memory.data()) + offset;
  vekiInit_RealFFT_32s(orders.x, orders.y, static_cast<VekiRealFFTSpec*>(at));
  const int block = c.object(Use::in, memory.data(), offset + static_cast<size_t>(specBytes), 4, 0);
  // A state of another kind has 0 where the tag is.
  c.refuseEntry(block, offset == 0 ? 0 : 1, Vek32u{0}, vekStsContextMatchErr);
  c.pointer(block, 1, static_cast<ptrdiff_t>(offset));
}

template <class Src, class Dst, bool forward>
void drawFft(Case& c) {
  Random& random = c.random;
  const Orders orders = drawOrders(c);
  const int spectrum = orders.spectrumBytes(), height = orders.height();
  const int srcBytes = forward ? orders.width() * static_cast<int>(sizeof(Src)) : spectrum;
  const int dstBytes = forward ? spectrum : orders.width() * static_cast<int>(sizeof(Dst));
  if (sizeof(Src) == sizeof(Dst) && random.chance(40)) {  // overlapping
    const int shift = random.chance(50) ? 4 * random.in(1, 3) : 0;
    const bool sourceFirst = random.chance(50);
    const int step = c.step(spectrum + shift, height, {1, false}, Use::inOut);
    const int block = c.memory(Use::inOut, {spectrum + shift, height, step}, 1, 4);
    c.pointer(block, 1, sourceFirst ? 0 : shift);
    c.stride(step, srcBytes);
    c.pointer(block, 1, sourceFirst ? shift : 0);
    c.stride(step, dstBytes);
  } else {
    const int srcStep = c.step(srcBytes, height, {1, false}, Use::in);
    c.pointer(c.memory(Use::in, {srcBytes, height, srcStep}, 1, sizeof(Src)));
    c.stride(srcStep, srcBytes);
    const int dstStep = c.step(dstBytes, height);
    c.pointer(c.memory(Use::out, {dstBytes, height, dstStep}, 1, sizeof(Dst)));
    c.stride(dstStep, dstBytes);
  }
  const int extremes[] = {-64, -65, 64, 65, INT_MIN, INT_MAX};
  c.number(random.chance(10) ? random.of(extremes) : random.in(-4, orders.x + orders.y + 4));
  drawSpec(c, orders);
  c.pointer(c.memory(Use::scratch, {bufferBytes(orders), 1, 0}));
}

/// The largest transform that fits an image.
Orders usualOrders(VekiSize size) {
  const auto order = [](int side) {
    int order = 0;
    while (order < highestOrder && 2 << order <= side) ++order;
    return order;
  };
  return {order(size.width), order(size.height)};
}

VekiRealFFTSpec* makeSpec(Orders orders) {
  VekiRealFFTSpec* spec = nullptr;
  vekiInitAlloc_RealFFT_32s(orders.x, orders.y, &spec);
  return spec;
}

template <class Src, class Dst, bool forward, class Define>
Record fft(const char* name,
           VekStatus (*f)(const Src*, int, Dst*, int, int, const VekiRealFFTSpec*, Vek8u*),
           Define define) {
  const auto prepare = [](Arguments& a) {
    const Orders orders = usualOrders(a.size);
    const int spectrum = orders.spectrumBytes();
    const int srcBytes = forward ? orders.width() * static_cast<int>(sizeof(Src)) : spectrum;
    const int dstBytes = forward ? spectrum : orders.width() * static_cast<int>(sizeof(Dst));
    a.image(a.plane(srcBytes, orders.height()));
    a.image(a.plane(dstBytes, orders.height()));
    a.number(forward ? 0 : orders.x + orders.y);
    a.pointer(a.keep(makeSpec(orders), vekiFree_RealFFT_32s));
    a.pointer(a.keep(std::vector<Vek8u>(static_cast<size_t>(bufferBytes(orders)))));
  };
  return with({name,
               bind(f),
               drawFft<Src, Dst, forward>,
               {},
               bind(define),
               {pointers, {vekStsContextMatchErr}, steps, {vekStsStrideErr}}},
              {{"", prepare}});
}

void drawOrderNumbers(Case& c) {
  c.number(c.random.in(lowestOrder, highestOrder), refusedOrders);
  c.number(c.random.in(lowestOrder, highestOrder), refusedOrders);
}

void drawSizes(Case& c) {
  drawOrderNumbers(c);
  for (int i = 0; i < 2; ++i) c.pointer(c.memory(Use::out, {4, 1, 0}, 1, 4));
}

void drawInit(Case& c) {
  drawOrderNumbers(c);
  const std::vector<Vek8u> bytes(4 * 97 + 3);
  c.pointer(c.object(Use::out, bytes.data(), bytes.size(), 4, 0));
}

void drawInitAlloc(Case& c) {
  drawOrderNumbers(c);
  c.pointer(c.objects(std::vector<void*>{&c}, Use::out));
}

VekStatus initAndFree(const Value* v) {
  VekiRealFFTSpec** const to = as<VekiRealFFTSpec**>(v[2]);
  const VekStatus status = vekiInitAlloc_RealFFT_32s(as<int>(v[0]), as<int>(v[1]), to);
  if (status < 0) return status;
  const Vek32u otherState[98] = {};
  auto* const other = reinterpret_cast<const VekiRealFFTSpec*>(otherState);
  if (vekiFree_RealFFT_32s(const_cast<VekiRealFFTSpec*>(other)) != vekStsContextMatchErr ||
      vekiFree_RealFFT_32s(nullptr) != vekStsNullPtrErr) {
    return vekStsBadArgErr;
  }
  const VekStatus released = vekiFree_RealFFT_32s(*to);
  *to = nullptr;
  return released;
}

// ---- Cosine -------------------------------------------------------------------------------------

void drawBlocks(Case& c) {
  Random& random = c.random;
  VekiSize roi = {8 * random.in(1, 9), 8 * random.in(1, 3)};
  if (c.limits()) roi = {8 * random.in(1, 160), 8};
  const int masks[] = {0xFFFF, 0x7FFF, 0x3FFF, 0xFF};
  const int mask = random.of(masks), bytes = 2 * roi.width;
  const Refused refused = {vekStsSizeErr, {0, -8, INT_MIN, 4, 12, roi.width + 1, INT_MAX}};
  const bool inPlace = random.chance(40);
  const int srcStep = c.step(bytes, roi.height, {1, false}, inPlace ? Use::inOut : Use::in);
  const int src =
      c.memory(inPlace ? Use::inOut : Use::in, {bytes, roi.height, srcStep}, 1, 2, mask);
  c.pointer(src);
  c.stride(srcStep, bytes);
  const int dstStep = inPlace ? srcStep : c.step(bytes, roi.height);
  c.pointer(inPlace ? src : c.memory(Use::out, {bytes, roi.height, dstStep}, 1, 2));
  c.stride(dstStep, bytes);
  c.pair(roi.width, roi.height, refused);
}

void drawBlock(Case& c) {
  const int masks[] = {0xFFFF, 0x3FFF};
  const bool inPlace = c.random.chance(40);
  const int src = c.memory(inPlace ? Use::inOut : Use::in, {128, 1, 0}, 1, 2, c.random.of(masks));
  c.pointer(src);
  c.pointer(inPlace ? src : c.memory(Use::out, {128, 1, 0}, 1, 2));
}

/// Samples as of video.
Arguments::Plane samples(Arguments& a, int width, int height) {
  const Arguments::Plane plane = a.plane(2 * width, height);
  for (int y = 0; y < height; ++y) {
    auto* const row = reinterpret_cast<Vek16s*>(plane.data + ptrdiff_t{y} * plane.step);
    for (int x = 0; x < width; ++x) row[x] = static_cast<Vek16s>(row[x] >> 7);
  }
  return plane;
}

void prepareBlocks(Arguments& a) {
  const VekiSize size = {a.size.width / 8 * 8, a.size.height / 8 * 8};
  a.image(samples(a, size.width, size.height));
  a.image(a.plane(2 * size.width, size.height));
  a.pair(size.width, size.height);
}

void prepareBlock(Arguments& a) {
  a.pointer(samples(a, 64, 1).data);
  a.pointer(a.plane(128, 1).data);
}

template <class F, class Define>
Record blocks(const char* name, F f, Define define) {
  return with(
      {name, bind(f), drawBlocks, {}, bind(define), {pointers, sizes, steps, {vekStsStrideErr}}},
      {{"", prepareBlocks}});
}

template <class F, class Define>
Record block(const char* name, F f, Define define) {
  return with({name, bind(f), drawBlock, {}, bind(define)}, {{"", prepareBlock}});
}

}  // namespace

std::vector<Record> transformRecords() {
  using namespace definition;
  std::vector<Record> records = {
      fft<Vek8u, Vek32s, true>(VEK_NAMED(vekiRealFFTFwd_8u32s_C1RSfs), realFftForward<Vek8u>),
      fft<Vek32s, Vek32s, true>(VEK_NAMED(vekiRealFFTFwd_32s_C1RSfs), realFftForward<Vek32s>),
      fft<Vek32s, Vek8u, false>(VEK_NAMED(vekiRealFFTInv_32s8u_C1RSfs), realFftInverse<Vek8u>),
      fft<Vek32s, Vek32s, false>(VEK_NAMED(vekiRealFFTInv_32s_C1RSfs), realFftInverse<Vek32s>),
      {"vekiGetSpecSize_RealFFT_32s", bind(vekiGetSpecSize_RealFFT_32s), drawSizes},
      {"vekiInit_RealFFT_32s", bind(vekiInit_RealFFT_32s), drawInit},
      {"vekiInitAlloc_RealFFT_32s", initAndFree, drawInitAlloc, {"vekiFree_RealFFT_32s"}},
      block(VEK_NAMED(vekiBlockDCTFwd_16s_C1), cosineBlockAlone<false>),
      block(VEK_NAMED(vekiBlockDCTInv_16s_C1), cosineBlockAlone<true>),
      blocks(VEK_NAMED(vekiBlockDCTFwd_16s_C1R), cosineBlocks<false>),
      blocks(VEK_NAMED(vekiBlockDCTInv_16s_C1R), cosineBlocks<true>)};
  const auto prepareOrders = [](Arguments& a) {
    a.number(usualOrders(a.size).x);
    a.number(usualOrders(a.size).y);
  };
  records[4].typical = {{"", [=](Arguments& a) {
                           prepareOrders(a);
                           for (int i = 0; i < 2; ++i) a.pointer(a.keep(std::vector<int>(1)));
                         }}};
  records[5].typical = {{"", [=](Arguments& a) {
                           prepareOrders(a);
                           a.pointer(a.keep(std::vector<Vek32u>(98)));
                         }}};
  records[6].typical = {{"", [=](Arguments& a) {
                           prepareOrders(a);
                           a.pointer(a.keep(std::vector<void*>(1)));
                         }}};
  records[6].allocates = true;
  return records;
}

}  // namespace vek::test
