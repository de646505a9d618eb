// The real two-dimensional Fourier transform, compiled for every level over whatever `Lanes` calls a
// vector: Lanes::count doubles, one for each of as many one-dimensional transforms. Lanes::vectors of
// them lie side by side, so that what they have in a row fills a line of the cache.
//
// Rows are transformed in pairs, one as the real and one as the imaginary parts, and the spectra of both
// are taken apart afterwards. The spectrum is kept in strips of as many columns as are transformed
// together, each row by row. An array of complex numbers has, at each index, Lanes::count real parts and
// then as many imaginary parts for each vector.
//
// A transform of n values is put together from four transforms of every fourth value, down to transforms
// of one or two values: each part's results are next to each other, so that what is worked on fits the
// first cache for most of the way. No product with exp(0) is taken, which would change nothing.
//
// The inverse exchanges real and imaginary parts before and after the same transform.
#pragma once

#include "vek/vek.h"

#include <float.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <utility>

#include "core/assert.h"
#include "core/kernel/unroll.h"
#include "image/transform/real_fft_kernels.h"
#include "image/transform/real_fft_units.h"

static_assert(FLT_EVAL_METHOD == 0, "Doubles in wider registers would be rounded twice.");

namespace vek::VEK_LEVEL {
namespace {

// ---- Complex numbers, one in each lane ----------------------------------------------------------

template <class Lanes>
struct Complex {
  using Vector = typename Lanes::Vector;

  Vector re, im;

  static Complex load(const Vek64f* from) {
    return {Lanes::load(from), Lanes::load(from + Lanes::count)};
  }
  void store(Vek64f* to) const {
    Lanes::store(re, to);
    Lanes::store(im, to + Lanes::count);
  }
  Complex exchanged() const { return {im, re}; }
  Complex plus(const Complex& other) const {
    return {Lanes::add(re, other.re), Lanes::add(im, other.im)};
  }
  Complex minus(const Complex& other) const {
    return {Lanes::subtract(re, other.re), Lanes::subtract(im, other.im)};
  }
  /// The product with exp(-2 pi i t / 1024).
  Complex timesUnit(ptrdiff_t t) const {
    const Vector cosine = Lanes::set(unitCosines.at[t]);
    const Vector negativeSine = Lanes::set(unitCosines.at[t + 256]);
    return {Lanes::subtract(Lanes::multiply(re, cosine), Lanes::multiply(im, negativeSine)),
            Lanes::add(Lanes::multiply(re, negativeSine), Lanes::multiply(im, cosine))};
  }
  /// The same for a constant, without what changes nothing but the sign of zeros, which no result shows.
  template <int t>
  Complex timesConstant() const {
    if constexpr (t == 0) {
      return *this;
    } else if constexpr (t == 256) {  // (0, -1)
      return {im, Lanes::subtract(Lanes::set(0), re)};
    } else if constexpr (t == 128 || t == 384) {  // (c, -c) and (-c, -c)
      const Vector reProduct = Lanes::multiply(re, Lanes::set(unitCosines.at[t]));
      const Vector imProduct = Lanes::multiply(im, Lanes::set(unitCosines.at[128]));
      const Vector sum = Lanes::add(reProduct, imProduct);
      return {sum, t == 128 ? Lanes::subtract(imProduct, reProduct)
                            : Lanes::subtract(reProduct, imProduct)};
    } else {
      return timesUnit(t);
    }
  }
};

/// One-dimensional transforms that are calculated side by side.
template <class Lanes>
constexpr ptrdiff_t abreast = ptrdiff_t{Lanes::vectors} * Lanes::count;

/// Where the complex numbers with an index are in an array, from a vector on.
template <class Lanes, class Number>
Number* at(Number* array, ptrdiff_t index, ptrdiff_t vector = 0) {
  return array + 2 * (abreast<Lanes> * index + Lanes::count * vector);
}

/// Calls body(vector) for each vector of what is side by side.
template <class Lanes, class Body>
[[gnu::always_inline]] inline void forEachVector(const Body& body) {
#pragma GCC unroll 1
  for (ptrdiff_t vector = 0; vector < Lanes::vectors; ++vector) body(vector);
}

// ---- One dimension ------------------------------------------------------------------------------

// Where more than one vector is meant, `load` and `store` take its index behind that of the value.

/// X[k], X[k + m], X[k + 2 m] and X[k + 3 m] of the value k of the four parts' transforms.
template <class Lanes, class Store>
[[gnu::always_inline]] inline void joinFour(const Complex<Lanes>& a, const Complex<Lanes>& b,
                                            const Complex<Lanes>& c, const Complex<Lanes>& d,
                                            ptrdiff_t k, ptrdiff_t m, const Store& store) {
  const Complex<Lanes> t0 = a.plus(c), t1 = a.minus(c), t2 = b.plus(d), t3 = b.minus(d);
  store(k, t0.plus(t2));
  store(k + m, {Lanes::add(t1.re, t3.im), Lanes::subtract(t1.im, t3.re)});
  store(k + 2 * m, t0.minus(t2));
  store(k + 3 * m, {Lanes::subtract(t1.re, t3.im), Lanes::add(t1.im, t3.re)});
}

/// Joins value k of the parts' transforms, which lie one after the other, m values each. product(i, v) is
/// the product of part i's value v with its root of unity, i = 1 .. 3.
template <class Lanes, class Product, class Store>
[[gnu::always_inline]] inline void joinValues(Vek64f* parts, ptrdiff_t m, ptrdiff_t k,
                                              const Product& product, const Store& store) {
  forEachVector<Lanes>([&](ptrdiff_t vector) {
    const auto part = [=](ptrdiff_t index) {
      return Complex<Lanes>::load(at<Lanes>(parts, k + index * m, vector));
    };
    const auto storeTo = [&](ptrdiff_t to, const Complex<Lanes>& v) { store(to, vector, v); };
    joinFour(part(0), product(std::integral_constant<int, 1>(), part(1)),
             product(std::integral_constant<int, 2>(), part(2)),
             product(std::integral_constant<int, 3>(), part(3)), k, m, storeTo);
  });
}

/// Joins all of their values.
template <class Lanes, class Store>
[[gnu::always_inline]] inline void joinParts(Vek64f* parts, ptrdiff_t m, const Store& store) {
  const auto none = [](ptrdiff_t, const Complex<Lanes>& v) { return v; };
  joinValues<Lanes>(parts, m, 0, none, store);
  const ptrdiff_t step = 256 / m;
  for (ptrdiff_t k = 1; k < m; ++k) {
    const auto product = [=](ptrdiff_t index, const Complex<Lanes>& v) {
      return v.timesUnit(index * k * step);
    };
    joinValues<Lanes>(parts, m, k, product, store);
  }
}

/// Transforms of the 2^order values load(first), load(first + step) ..., order <= 2.
template <class Lanes, class Load, class Store>
[[gnu::always_inline]] inline void transformFew(int order, const Load& load, ptrdiff_t first,
                                                ptrdiff_t step, const Store& store) {
  forEachVector<Lanes>([&](ptrdiff_t vector) {
    const auto storeTo = [&](ptrdiff_t k, const Complex<Lanes>& v) { store(k, vector, v); };
    const Complex<Lanes> a = load(first, vector);
    if (order == 0) {
      storeTo(0, a);
      return;
    }
    const Complex<Lanes> b = load(first + step, vector);
    if (order == 1) {
      storeTo(0, a.plus(b));
      storeTo(1, a.minus(b));
      return;
    }
    joinFour(a, b, load(first + 2 * step, vector), load(first + 3 * step, vector), 0, 1, storeTo);
  });
}

/// Joins parts in place.
template <class Lanes>
[[gnu::noinline]] void joinInPlace(Vek64f* parts, ptrdiff_t m) {
  joinParts<Lanes>(parts, m, [=](ptrdiff_t k, ptrdiff_t vector, const Complex<Lanes>& v) {
    v.store(at<Lanes>(parts, k, vector));
  });
}

/// Transforms of load(first), load(first + step) ... to `out`, 2^order values, order <= 4.
template <class Lanes, int order, class Load>
[[gnu::always_inline]] inline void transformLeaf(const Load& load, ptrdiff_t first, ptrdiff_t step,
                                                 Vek64f* out) {
  constexpr bool few = order <= 2;
  constexpr ptrdiff_t m = 1 << (few ? order : order - 2);
  for (int part = 0; part < (few ? 1 : 4); ++part) {
    const auto store = [=](ptrdiff_t k, ptrdiff_t vector, const Complex<Lanes>& v) {
      v.store(at<Lanes>(out, part * m + k, vector));
    };
    transformFew<Lanes>(few ? order : order - 2, load, first + part * step, few ? step : 4 * step,
                        store);
  }
  if constexpr (!few) {
    const auto store = [=](ptrdiff_t k, ptrdiff_t vector, const Complex<Lanes>& v) {
      v.store(at<Lanes>(out, k, vector));
    };
    unrolled<m>([&](auto k) {
      const auto product = [k](auto index, const Complex<Lanes>& v) {
        return v.template timesConstant<(256 >> (order - 2)) * k * index>();
      };
      joinValues<Lanes>(out, m, k, product, store);
    });
  }
}

/// Four transforms, of load(0), load(4) ..., of load(1), load(5) ... and so on, 2^order values each, one
/// after the other to `out`. Each is put together of leaves of 2^leafOrder values.
template <class Lanes, int leafOrder, class Load>
[[gnu::noinline]] void transformParts(int order, Load load, Vek64f* out) {
  const ptrdiff_t leaves = ptrdiff_t{4} << (order - leafOrder), whole = ptrdiff_t{1} << order;
  for (ptrdiff_t leaf = 0; leaf < leaves; ++leaf) {
    // The leaf's digits to the base of 4, the highest of which tells the part, in reverse.
    ptrdiff_t first = 0;
    for (ptrdiff_t digit = 1, rest = leaf; digit < leaves; digit *= 4, rest /= 4) {
      first = 4 * first + rest % 4;
    }
    transformLeaf<Lanes, leafOrder>(load, first, leaves, at<Lanes>(out, leaf << leafOrder));
    // What is complete with this leaf.
    ptrdiff_t m = ptrdiff_t{1} << leafOrder;
    for (ptrdiff_t done = leaf + 1; done % 4 == 0 && m < whole; done /= 4, m *= 4) {
      joinInPlace<Lanes>(at<Lanes>(out, (done / 4 - 1) * 4 * m), m);
    }
  }
}

/// Transforms of load(0), load(1) ..., whose value k goes to store(k, value). All values have been
/// loaded before the first one is stored. `work` has room for them. (`load` and `store` are copies, which
/// stores to images change as little as they do registers.)
template <class Lanes, class Load, class Store>
[[gnu::noinline]] void transform(int order, Load load, Store store, Vek64f* work) {
  if (order <= 2) {
    const auto placeOf = [=](ptrdiff_t k, ptrdiff_t vector) { return at<Lanes>(work, k, vector); };
    for (ptrdiff_t k = 0; k < ptrdiff_t{1} << order; ++k) {
      forEachVector<Lanes>([&](ptrdiff_t vector) { load(k, vector).store(placeOf(k, vector)); });
    }
    const auto loaded = [=](ptrdiff_t k, ptrdiff_t vector) {
      return Complex<Lanes>::load(placeOf(k, vector));
    };
    transformFew<Lanes>(order, loaded, 0, 1, store);
    return;
  }
  const int parts = order - 2;
  if (parts == 1) {
    transformParts<Lanes, 1>(parts, load, work);
  } else if (parts == 2) {
    transformParts<Lanes, 2>(parts, load, work);
  } else if (parts % 2 == 1) {
    transformParts<Lanes, 3>(parts, load, work);
  } else {
    transformParts<Lanes, 4>(parts, load, work);
  }
  joinParts<Lanes>(work, ptrdiff_t{1} << parts, store);
}

// ---- Strips, batches of rows --------------------------------------------------------------------

/// The rows of a strip. `together` of them lie one after the other, then come those of the next strips.
template <class Lanes>
struct Strip {
  Vek64f* first;
  ptrdiff_t strips, together;

  /// From a vector on.
  Vek64f* row(ptrdiff_t y, ptrdiff_t vector) const {
    const ptrdiff_t within = y & (together - 1);
    return at<Lanes>(first, (y - within) * strips + within, vector);
  }
};

/// A transform with its buffer divided: the spectrum in strips, and two arrays of as many complex
/// numbers as the longer side has.
template <class Lanes>
struct Plan : RealFft {
  /// Columns of a strip, and pairs of rows, that are transformed together.
  static constexpr ptrdiff_t side = abreast<Lanes>;
  static constexpr ptrdiff_t batch = 2 * side;

  ptrdiff_t strips;
  /// As many rows of a strip as a batch has lie together: it is stored to memory that is contiguous, and
  /// the rows of a strip are not a power of two apart.
  ptrdiff_t together;
  Vek64f *work, *second;

  explicit Plan(const RealFft& fft)
      : RealFft(fft),
        strips((columns() + side - 1) / side),
        together(height() < batch ? height() : ptrdiff_t{batch}),
        work(at<Lanes>(buffer, strips * height())) {
    VEK_ASSERT(orderX >= 0 && orderX <= 10 && orderY >= 0 && orderY <= 10);
    VEK_ASSERT(reinterpret_cast<uintptr_t>(buffer) % 64 == 0 && side <= mostFftLanes);
    second = at<Lanes>(work, width() > height() ? width() : height());
  }

  Strip<Lanes> strip(ptrdiff_t index) const {
    return {at<Lanes>(buffer, index * together), strips, together};
  }
  /// How many columns the spectrum has in a strip, and from it on.
  ptrdiff_t columnsFrom(ptrdiff_t index) const { return columns() - index * side; }
};

// ---- Tiles: columns of a batch of rows, the samples of the even rows and then those of the odd ones --

/// `rounds` perfect shuffles of the lanes of `count` vectors: lane i moves to where the bits of i rotated
/// to the left by `rounds` say. Of 2^r rows of 2^c lanes r rounds make columns, and c rounds make rows again.
template <class Part, int rounds, int count>
[[gnu::always_inline]] inline void shuffle(typename Part::Vector (&v)[count]) {
  if constexpr (rounds > 0) {
    typename Part::Vector next[count];
    for (int i = 0; i < count / 2; ++i) {
      next[2 * i] = Part::interleaveLower(v[i], v[i + count / 2]);
      next[2 * i + 1] = Part::interleaveUpper(v[i], v[i + count / 2]);
    }
    shuffle<Part, rounds - 1, count>(next);
    for (int i = 0; i < count; ++i) v[i] = next[i];
  }
}

/// Of a power of two.
constexpr int logarithm(int v) {
  int exponent = 0;
  for (; v > 1; v /= 2) ++exponent;
  return exponent;
}

/// The row that is in place i of a tile's columns: first the even ones.
constexpr int rowInTile(int i, int rows) {
  return i < rows / 2 ? 2 * i : 2 * i - rows + 1;
}

/// Tiles of whole batches of rows that are no shorter than a part's 16 bytes.
template <class Lanes, class Sample>
void loadWholeTile(const Vek8u* rows, ptrdiff_t step, ptrdiff_t width, Sample* tile) {
  using Part = typename Lanes::template Part<Sample>;
  constexpr int batch = Plan<Lanes>::batch, columns = 16 / sizeof(Sample);
  for (ptrdiff_t x = 0; x < width; x += columns) {
    typename Part::Vector v[batch];
    for (int i = 0; i < batch; ++i) {
      const Vek8u* const row = rows + rowInTile(i, batch) * step;
      v[i] = Part::load(reinterpret_cast<const Sample*>(row) + x);
    }
    shuffle<Part, logarithm(batch), batch>(v);
    for (int i = 0; i < batch; ++i) Part::store(v[i], tile + x * batch + i * columns);
  }
}

template <class Lanes, class Sample>
void storeWholeTile(const Sample* tile, ptrdiff_t width, Vek8u* rows, ptrdiff_t step) {
  using Part = typename Lanes::template Part<Sample>;
  constexpr int batch = Plan<Lanes>::batch, columns = 16 / sizeof(Sample);
  for (ptrdiff_t x = 0; x < width; x += columns) {
    typename Part::Vector v[batch];
    for (int i = 0; i < batch; ++i) v[i] = Part::load(tile + x * batch + i * columns);
    shuffle<Part, logarithm(columns), batch>(v);
    for (int i = 0; i < batch; ++i) {
      Vek8u* const row = rows + rowInTile(i, batch) * step;
      Part::store(v[i], reinterpret_cast<Sample*>(row) + x);
    }
  }
}

/// Whether the tile of the rows from y on is one of those above.
template <class Lanes, class Sample>
bool isWholeTile(const Plan<Lanes>& plan, ptrdiff_t y) {
  return y + plan.batch <= plan.height() && plan.width() >= ptrdiff_t{16 / sizeof(Sample)};
}

/// Rows beyond the image are zeros.
template <class Lanes, class Sample>
void loadTile(const Plan<Lanes>& plan, ptrdiff_t y, Sample* tile) {
  constexpr ptrdiff_t batch = Plan<Lanes>::batch;
  const Vek8u* const rows = plan.src + y * plan.srcStep;
  if constexpr (Lanes::shufflesTiles) {
    if (isWholeTile<Lanes, Sample>(plan, y)) {
      return loadWholeTile<Lanes>(rows, plan.srcStep, plan.width(), tile);
    }
  }
  for (ptrdiff_t r = 0; r < batch; ++r) {
    Sample* to = tile + r % 2 * abreast<Lanes> + r / 2;
    const bool exists = y + r < plan.height();
    const Vek8u* const from = exists ? rows + r * plan.srcStep : nullptr;
    for (ptrdiff_t x = 0; x < plan.width(); ++x, to += batch) {
      *to = 0;
      if (exists) memcpy(to, from + x * ptrdiff_t{sizeof(Sample)}, sizeof(Sample));
    }
  }
}

template <class Lanes, class Sample>
void storeTile(const Plan<Lanes>& plan, ptrdiff_t y, const Sample* tile) {
  constexpr ptrdiff_t batch = Plan<Lanes>::batch;
  Vek8u* const rows = plan.dst + y * plan.dstStep;
  if constexpr (Lanes::shufflesTiles) {
    if (isWholeTile<Lanes, Sample>(plan, y)) {
      return storeWholeTile<Lanes>(tile, plan.width(), rows, plan.dstStep);
    }
  }
  for (ptrdiff_t r = 0; r < batch && y + r < plan.height(); ++r) {
    const Sample* from = tile + r % 2 * abreast<Lanes> + r / 2;
    Vek8u* const to = rows + r * plan.dstStep;
    for (ptrdiff_t x = 0; x < plan.width(); ++x, from += batch) {
      memcpy(to + x * ptrdiff_t{sizeof(Sample)}, from, sizeof(Sample));
    }
  }
}

// ---- Forward ------------------------------------------------------------------------------------

/// From the transforms of pairs of rows, in `work`, twice those of the rows, in the strips.
template <class Lanes>
void separateRows(const Plan<Lanes>& plan, ptrdiff_t y) {
  using Vector = typename Lanes::Vector;
  constexpr ptrdiff_t lanes = Lanes::count;
  const ptrdiff_t width = plan.width(), rows = plan.height() - y;
  // The columns of a vector of a strip, for the pairs of rows of a vector of `work`.
  const auto separate = [=, work = plan.work](ptrdiff_t firstColumn, ptrdiff_t pairs, Vek64f* to) {
    Vector evenRe[lanes], evenIm[lanes], oddRe[lanes], oddIm[lanes];
    for (ptrdiff_t i = 0; i < lanes; ++i) {
      // Columns beyond the spectrum's are copies of its last one.
      const ptrdiff_t column = firstColumn + i, last = width / 2;
      const ptrdiff_t k = column < last ? column : last, mirrored = (width - k) & (width - 1);
      const auto z = Complex<Lanes>::load(at<Lanes>(work, k, pairs));
      const auto conjugate = Complex<Lanes>::load(at<Lanes>(work, mirrored, pairs));
      evenRe[i] = Lanes::add(z.re, conjugate.re);
      evenIm[i] = Lanes::subtract(z.im, conjugate.im);
      oddRe[i] = Lanes::add(z.im, conjugate.im);
      oddIm[i] = Lanes::subtract(conjugate.re, z.re);
    }
    Lanes::transpose(evenRe);
    Lanes::transpose(evenIm);
    Lanes::transpose(oddRe);
    Lanes::transpose(oddIm);
    for (ptrdiff_t i = 0; i < lanes; ++i) {
      const ptrdiff_t even = 2 * (pairs * lanes + i);
      if (even >= rows) break;
      Complex<Lanes>{evenRe[i], evenIm[i]}.store(at<Lanes>(to, even));
      if (even + 1 == rows) break;
      Complex<Lanes>{oddRe[i], oddIm[i]}.store(at<Lanes>(to, even + 1));
    }
  };
  Vek64f* to = plan.strip(0).row(y, 0);
  for (ptrdiff_t strip = 0; strip < plan.strips; ++strip, to = at<Lanes>(to, plan.together)) {
    forEachVector<Lanes>([&](ptrdiff_t pairs) {
      forEachVector<Lanes>([&](ptrdiff_t columns) {
        separate(strip * plan.side + columns * lanes, pairs, at<Lanes>(to, 0, columns));
      });
    });
  }
}

/// Scaled, and within the range of the result; what is too low is left to Lanes if that stores it as the
/// lowest integer.
template <class Lanes>
struct Range {
  typename Lanes::Vector scale, low, high;

  typename Lanes::Vector of(typename Lanes::Vector v) const {
    const auto limited = Lanes::lower(Lanes::multiply(v, scale), high);
    return Lanes::clampsLow ? limited : Lanes::higher(limited, low);
  }
};

template <class Lanes>
Range<Lanes> intRange(const Plan<Lanes>& plan) {
  return {Lanes::set(plan.scale), Lanes::set(-2147483648.0), Lanes::set(2147483647.0)};
}

template <class Lanes>
void forwardColumns(const Plan<Lanes>& plan) {
  constexpr ptrdiff_t lanes = Lanes::count;
  const Range<Lanes> range = intRange(plan);
  for (ptrdiff_t index = 0; index < plan.strips; ++index) {
    const auto load = [strip = plan.strip(index)](ptrdiff_t y, ptrdiff_t vector) {
      const Vek64f* const from = strip.row(y, vector);
      __builtin_prefetch(at<Lanes>(from, strip.together));  // of the next strip
      return Complex<Lanes>::load(from);
    };
    const auto store = [range, dst = plan.dst + 8 * index * plan.side, step = plan.dstStep,
                        columns = plan.columnsFrom(index)](ptrdiff_t y, ptrdiff_t vector,
                                                           const Complex<Lanes>& v) {
      Vek8u* const to = dst + y * step + 8 * lanes * vector;
      const ptrdiff_t count = columns - lanes * vector;
      if (count >= lanes) {
        Lanes::storePairs(range.of(v.re), range.of(v.im), to);
      } else if (count > 0) {
        Vek8u pairs[8 * Lanes::count];
        Lanes::storePairs(range.of(v.re), range.of(v.im), pairs);
        memcpy(to, pairs, static_cast<size_t>(8 * count));
      }
    };
    transform<Lanes>(plan.orderY, load, store, plan.work);
  }
}

template <class Lanes, class Sample>
void forwardFft(const RealFft& fft) {
  const Plan<Lanes> plan(fft);
  auto* const tile = reinterpret_cast<Sample*>(plan.second);
  for (ptrdiff_t y = 0; y < plan.height(); y += plan.batch) {
    loadTile(plan, y, tile);
    const auto load = [=](ptrdiff_t x, ptrdiff_t vector) -> Complex<Lanes> {
      const Sample* const even = tile + x * Plan<Lanes>::batch + vector * Lanes::count;
      return {Lanes::fromSamples(even), Lanes::fromSamples(even + Plan<Lanes>::side)};
    };
    const auto store = [work = plan.work](ptrdiff_t k, ptrdiff_t vector, const Complex<Lanes>& v) {
      v.store(at<Lanes>(work, k, vector));
    };
    transform<Lanes>(plan.orderX, load, store, plan.work);
    separateRows(plan, y);
  }
  forwardColumns(plan);
}

// ---- Inverse ------------------------------------------------------------------------------------

template <class Lanes>
void inverseColumns(const Plan<Lanes>& plan) {
  constexpr ptrdiff_t lanes = Lanes::count;
  for (ptrdiff_t index = 0; index < plan.strips; ++index) {
    const auto load = [src = plan.src + 8 * index * plan.side, step = plan.srcStep,
                       columns = plan.columnsFrom(index)](ptrdiff_t y, ptrdiff_t vector) {
      const Vek8u* const from = src + y * step + 8 * lanes * vector;
      const ptrdiff_t count = columns - lanes * vector;
      if (count >= lanes) return Lanes::loadPairs(from).exchanged();
      Vek8u pairs[8 * Lanes::count] = {};
      if (count > 0) memcpy(pairs, from, static_cast<size_t>(8 * count));
      return Lanes::loadPairs(pairs).exchanged();
    };
    const auto store = [strip = plan.strip(index)](ptrdiff_t y, ptrdiff_t vector,
                                                   const Complex<Lanes>& v) {
      v.exchanged().store(strip.row(y, vector));
    };
    transform<Lanes>(plan.orderY, load, store, plan.work);
  }
}

/// From the spectra of rows, in the strips, those of their pairs, in `second`.
template <class Lanes>
void joinRows(const Plan<Lanes>& plan, ptrdiff_t y) {
  using Vector = typename Lanes::Vector;
  constexpr ptrdiff_t lanes = Lanes::count;
  const ptrdiff_t middle = plan.width() / 2, rows = plan.height() - y;
  // The columns of a vector of a strip, for the pairs of rows of a vector of `second`.
  const auto join = [=, second = plan.second](const Vek64f* from, ptrdiff_t pairs,
                                              ptrdiff_t firstColumn) {
    const auto rowOf = [=](ptrdiff_t row) -> Complex<Lanes> {
      if (row < rows) return Complex<Lanes>::load(at<Lanes>(from, row));
      return {Lanes::set(0), Lanes::set(0)};
    };
    Vector re[lanes], im[lanes], mirroredRe[lanes], mirroredIm[lanes];
    for (ptrdiff_t i = 0; i < lanes; ++i) {
      const ptrdiff_t row = 2 * (pairs * lanes + i);
      const Complex<Lanes> a = rowOf(row), b = rowOf(row + 1);
      re[i] = Lanes::subtract(a.re, b.im);
      im[i] = Lanes::add(a.im, b.re);
      mirroredRe[i] = Lanes::add(a.re, b.im);
      mirroredIm[i] = Lanes::subtract(b.re, a.im);
    }
    Lanes::transpose(re);
    Lanes::transpose(im);
    Lanes::transpose(mirroredRe);
    Lanes::transpose(mirroredIm);
    for (ptrdiff_t i = 0; i < lanes; ++i) {
      const ptrdiff_t k = firstColumn + i;
      if (k == 0 || k >= middle) continue;
      Complex<Lanes>{re[i], im[i]}.store(at<Lanes>(second, k, pairs));
      Complex<Lanes>{mirroredRe[i], mirroredIm[i]}.store(at<Lanes>(second, 2 * middle - k, pairs));
    }
  };
  const Vek64f* from = plan.strip(0).row(y, 0);
  for (ptrdiff_t strip = 0; strip < plan.strips; ++strip, from = at<Lanes>(from, plan.together)) {
    forEachVector<Lanes>([&](ptrdiff_t pairs) {
      forEachVector<Lanes>([&](ptrdiff_t columns) {
        join(at<Lanes>(from, 0, columns), pairs, strip * plan.side + columns * lanes);
      });
    });
  }
  // The first and the middle column are real: what is imaginary there is left out.
  for (ptrdiff_t k = 0; k <= middle; k += middle > 0 ? middle : 1) {
    const Strip<Lanes> strip = plan.strip(k / plan.side);
    const ptrdiff_t column = k % plan.side;
    for (ptrdiff_t r = 0; r < plan.batch; ++r) {
      const ptrdiff_t pair = r / 2;
      Vek64f& to = at<Lanes>(plan.second, k, pair / lanes)[r % 2 * lanes + pair % lanes];
      to = r < rows ? strip.row(y + r, column / lanes)[column % lanes] : 0;
    }
  }
}

template <class Lanes, class Sample>
void inverseFft(const RealFft& fft) {
  const Plan<Lanes> plan(fft);
  inverseColumns(plan);
  Range<Lanes> range = intRange(plan);
  if (sizeof(Sample) == 1) range.low = Lanes::set(0), range.high = Lanes::set(255);
  for (ptrdiff_t y = 0; y < plan.height(); y += plan.batch) {
    joinRows(plan, y);
    auto* const tile = reinterpret_cast<Sample*>(plan.second);
    const auto load = [from = plan.second](ptrdiff_t x, ptrdiff_t vector) {
      return Complex<Lanes>::load(at<Lanes>(from, x, vector)).exchanged();
    };
    const auto store = [=](ptrdiff_t x, ptrdiff_t vector, const Complex<Lanes>& v) {
      Sample* const even = tile + x * Plan<Lanes>::batch + vector * Lanes::count;
      Lanes::storeSamples(range.of(v.im), even);
      Lanes::storeSamples(range.of(v.re), even + Plan<Lanes>::side);
    };
    transform<Lanes>(plan.orderX, load, store, plan.work);
    storeTile(plan, y, tile);
  }
}

/// The table of a level. (`Sample` names the image's side, signed 32-bit integers or bytes.)
template <class Lanes>
constexpr RealFftKernels realFftKernelsOf = {
    .forwardBytes = forwardFft<Lanes, Vek8u>,
    .forwardInts = forwardFft<Lanes, Vek32s>,
    .inverseBytes = inverseFft<Lanes, Vek8u>,
    .inverseInts = inverseFft<Lanes, Vek32s>,
};

}  // namespace
}  // namespace vek::VEK_LEVEL
