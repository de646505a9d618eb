/** @file isp.hpp
 *  The camera path as one object: any sensor's raw frames in, pictures with the right colours out.
 *  C++17, header only.
 *
 *      vek::Isp isp({.size = {1920, 1080}, .format = vek::Raw::csi2_10, .order = vek::Bayer::bggr,
 *                    .black = 64});
 *      vek::Image<vek::Bgr24> out(isp.outputSize());
 *      isp.process(frame, out);              // a frame's bytes, any of the output formats
 *      sensor.program(isp.results().exposure.time, isp.results().exposure.gain);
 *
 *  What a frame goes through:
 *
 *      unpack, black level, gains -> dead samples -> linear colour matrix -> tone curve, demosaicing,
 *      YCbCr, reduction -> resizing, rotation, conversion to the output's pixels
 *
 *  Pictures of 24 or 32 bits a pixel that are neither reduced, resized nor rotated need no YCbCr, and
 *  chroma is not shared between their pixels.
 *
 *  All of that happens in bands of a few rows that stay in the cache from the raw frame to the
 *  pixels; the output does not depend on their height. Only a picture that is resized by other ratios
 *  than those of IspSettings::output needs the whole planes in between. Every n-th pair of rows is kept
 *  for the automatic exposure and the automatic white balance, which then decide about the next frame.
 *
 *  `docs/colour.md` says what makes the colours right, and measures how right they are. */
#ifndef VEK_ISP_HPP
#define VEK_ISP_HPP

#include "vek/cpp/raw.hpp"
#include "vek/isp/color.hpp"
#include "vek/isp/control.hpp"
#include "vek/isp/finish.hpp"
#include "vek/view.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace vek {
inline namespace v0 {

/** @defgroup isp C++: the camera path as one object
 *  @{ */

/// Black levels, in the units of the samples: one for all colours, or one for each.
struct BlackLevels {
  std::array<int, 4> of;  ///< R, Gr (the green beside red), Gb (the green beside blue), B

  /// The same for all.
  BlackLevels(int all) : of{all, all, all, all} {}
  /// Of R, Gr, Gb and B.
  BlackLevels(int red, int greenOfRed, int greenOfBlue, int blue)
      : of{red, greenOfRed, greenOfBlue, blue} {}
  /// Of R, Gr, Gb and B.
  BlackLevels(const std::array<int, 4>& levels) : of(levels) {}
};

/// What an Isp is made for.
struct IspSettings {
  Size size = {0, 0};         ///< of the frames, in samples
  Raw format = Raw::csi2_10;  ///< how samples are packed
  Bayer order = Bayer::rggb;  ///< the colours of the frame's top left 2 x 2 samples
  BlackLevels black = 0;      ///< a number, or {R, Gr, Gb, B}; see also Isp::setBlack()
  /// Where samples saturate, in their units; 0 is their largest value. See also Isp::setWhite().
  int white = 0;
  int bits = 0;  ///< Raw::plain16: valid bits of a word, 9..16; 0 is 10
  /// The part of the frame that is shown. It begins on a red sample and has even sides. Without a
  /// width it is the largest such part.
  Rect crop = {0, 0, 0, 0};
  int scale = 1;  ///< 1, 2 or 4: blocks of so many samples a side become one pixel
  /// The picture is resized to this, before it is rotated. Without a width it is not. It is resized in bands
  /// where it becomes lower by a ratio of small numbers whose second one is a power of two, such as 3:1,
  /// 9:4 or 15:8, and has an even height; otherwise once the whole of it is there.
  Size output = {0, 0};
  Rotation rotation = Rotation::none;          ///< of the picture
  Range range = Range::studio;                 ///< of I420, NV12 and I422
  ToneCurve curve = ToneCurve::srgb;           ///< see also Isp::setCurve()
  CameraColor color = {};                      ///< see also Isp::setColor()
  ColorGains gains = {};                       ///< of the first frame; see also Isp::setGains()
  double digitalGain = 1;                      ///< on top of them, 1..8
  std::vector<VekiDeadPixel> deadPixels = {};  ///< rows and columns of the frame
  ExposureSettings exposure = {};              ///< the automatic exposure
  bool whiteBalance = true;                    ///< the automatic white balance
  int jobs = 1;  ///< how many bands are worked on at once; see Isp::process()
  int bandRows = recommended::bandRows;  ///< rows of a band, at least 1; about so many are taken
};

/// @cond
namespace detail {

using RawState = Owned<VekiRggbToYCbCrState, vekiFree_10RGGBtoYCbCr_RotRsz_P3R>;

/// Bits of a sample; 0 if the format does not exist or has no words of so many.
constexpr int bitsOf(Raw format, int wordBits) {
  switch (format) {
    case Raw::bytes:
      return 8;
    case Raw::plain16:
      return wordBits == 0 ? 10 : wordBits >= 9 && wordBits <= 16 ? wordBits : 0;
    case Raw::csi2_10:
      return 10;
    case Raw::csi2_12:
      return 12;
    case Raw::csi2_14:
      return 14;
  }
  return 0;
}

/// A dead sample, and the columns of its nearest neighbours of its colour in its row that are not
/// dead; -1 if there is none.
struct DeadSample {
  int row, column, left, right;
};

}  // namespace detail
/// @endcond

/// The camera path. Construction checks everything and takes all memory; process() takes none. An Isp
/// works on one frame at a time.
///
/// The constructor and the functions that set something throw Error, and change nothing, if an argument
/// is wrong; its text says which and why. See OnError for other ways.
class Isp {
 public:
  /// Makes everything that frames of this kind need.
  explicit Isp(const IspSettings& settings) : settings_(settings) {
    checkSource();
    checkRegion();
    checkOutput();
    control_ = std::make_unique<detail::FrameControl>(Size{region_.width, region_.height});
    setExposureSettings(settings.exposure);
    setLevels(settings.black, settings.white);
    setGains(settings.gains, settings.digitalGain);
    setDeadPixels(settings.deadPixels);
    makeBuffers();
    curve_ = toneTable(settings.curve);
    bytes_ = detail::byteTable(curve_);
    setColor(settings.color);
    control_->setTaken(settings.exposure.least);
  }

  /// The size of the picture, rotated: what an output has to have.
  Size outputSize() const { return rotated(output_, settings_.rotation); }
  /// The part of the frame that is shown.
  Rect crop() const { return region_; }
  /// What the last frame told, and what the next one should be taken with.
  const IspResults& results() const { return control_->results(); }
  /// The linear matrix that the next frame is given, or that it would be given if the matrix acted
  /// before the curve: the camera's, adapted to the light.
  Matrix3 matrix() const { return adaptedMatrix(color_, gains()); }
  /// The gains that the next frame is balanced with; green is 1.
  ColorGains gains() const { return control_->gains(); }

  /// Black levels, and where samples saturate, in their units; 0 is their largest value. A sample from there
  /// on is as bright as can be. It is above the black levels by a sixteenth of the samples' range or more.
  void setLevels(const BlackLevels& black, int white) {
    const int least = 1 << (bits_ - 4), most = whiteOf(white);
    if (most < least || most >= 1 << bits_) {
      OnError().failure(vekStsBadArgErr, "Isp", "white", "is %d, not in %d..%d", white, least,
                        (1 << bits_) - 1);
    }
    for (const int level : black.of) {
      if (level < 0 || level > most - least) {
        OnError().failure(vekStsBadArgErr, "Isp", "black", "is %d, not in 0..%d", level,
                          most - least);
      }
    }
    settings_.black = black;
    settings_.white = white;
    for (std::size_t i = 0; i < 4; ++i) frontEnd_.black[i] = static_cast<Vek16u>(black.of[i]);
  }
  /// Black levels alone.
  void setBlack(const BlackLevels& black) { setLevels(black, settings_.white); }
  /// The white level alone.
  void setWhite(int white) { setLevels(settings_.black, white); }

  /// Gains of the colours, relative to green, and a gain on top of them. With the automatic white
  /// balance on, they are those that it starts from. All samples are scaled so that a saturated sample
  /// stays saturated: no gain is below 1, or highlights would lose their white.
  void setGains(const ColorGains& gains, double digitalGain = 1) {
    const double most = recommended::mostWhiteBalance;
    const auto isWrong = [&](double gain) {
      return !(gain * most >= gains.green && gain <= gains.green * most);
    };
    if (!(gains.green > 0) || isWrong(gains.red) || isWrong(gains.blue)) {
      OnError().failure(vekStsBadArgErr, "Isp", "gains",
                        "%g, %g, %g: red and blue are not within 1/%g..%g of green", gains.red,
                        gains.green, gains.blue, most, most);
    }
    if (!(digitalGain >= 1 && digitalGain <= 8)) {
      OnError().failure(vekStsBadArgErr, "Isp", "digitalGain", "is %g, not in 1..8", digitalGain);
    }
    digitalGain_ = digitalGain;
    control_->setGains(gains);
  }

  /// Turns the automatic white balance on or off; the gains stay.
  void setWhiteBalance(bool on) { settings_.whiteBalance = on; }

  /// Settings of the automatic exposure.
  void setExposureSettings(const ExposureSettings& exposure) { control_->setExposure(exposure); }

  /// What the next frame that is processed was taken with. A sensor shows new values one or two frames
  /// after they were set; the control takes that into account if it is told so before each process().
  /// Without a call it takes the frame to be taken with results().exposure.
  void setExposure(const Exposure& taken) {
    if (!(taken.time > 0 && taken.gain > 0)) {
      OnError().failure(vekStsBadArgErr, "Isp", "taken",
                        "has time %g and gain %g, not both above 0", taken.time, taken.gain);
    }
    control_->setTaken(taken);
  }

  /// The tone curve.
  void setCurve(ToneCurve curve) { setCurve(toneTable(curve)); }
  /// A tone curve of the caller's.
  void setCurve(const ToneTable& curve) {
    float last = 0;
    for (const float value : curve) {
      if (!(value >= last && value <= 1))
        OnError().failure(vekStsBadArgErr, "Isp", "curve", "falls, or leaves 0..1, at %g",
                          double{value});
      last = value;
    }
    take(makePaths(curve, color_));
    curve_ = curve;
    bytes_ = detail::byteTable(curve_);
  }

  /// The camera's colour matrix. Throws if a row does not sum to anything above 0.
  void setColor(const CameraColor& color) {
    for (const auto& row : color.matrix) {
      if (!(row[0] + row[1] + row[2] > 0)) {
        OnError().failure(vekStsBadArgErr, "Isp", "matrix", "has a row that sums to %g",
                          row[0] + row[1] + row[2]);
      }
    }
    take(makePaths(curve_, color));
    color_ = color;
  }

  /// Dead samples, in rows and columns of the frame. Each becomes the mean of its neighbours of the
  /// same colour in its row, or one of them at the edge or beside another dead one.
  void setDeadPixels(const std::vector<VekiDeadPixel>& dead) {
    std::vector<detail::DeadSample> list;
    for (const VekiDeadPixel& p : dead) {
      if (p.row < 0 || p.row >= settings_.size.height || p.column < 0 ||
          p.column >= settings_.size.width) {
        OnError().failure(vekStsBadArgErr, "Isp", "deadPixels",
                          "has (row %d, column %d), outside %d x %d", p.row, p.column,
                          settings_.size.width, settings_.size.height);
      }
      // Of those that no pixel depends on nothing need be known.
      const int row = p.row - region_.y, column = p.column - region_.x;
      if (row >= -border && row < region_.height + border && column >= -columnsBefore() &&
          column < region_.width + columnsAfter()) {
        list.push_back({row, column, 0, 0});
      }
    }
    const auto before = [](const detail::DeadSample& a, const detail::DeadSample& b) {
      return a.row != b.row ? a.row < b.row : a.column < b.column;
    };
    std::sort(list.begin(), list.end(), before);
    const auto neighbour = [&](detail::DeadSample at, int step) {
      do {
        at.column += step;
        if (at.column < -columnsBefore() || at.column >= region_.width + columnsAfter())
          return none;
      } while (std::binary_search(list.begin(), list.end(), at, before));
      return at.column;
    };
    for (detail::DeadSample& sample : list) {
      sample.left = neighbour(sample, -2);
      sample.right = neighbour(sample, 2);
    }
    dead_ = std::move(list);
  }

  /// Makes a picture of a frame, and decides about exposure and white balance of the next one.
  ///
  /// `frame` is a view of bytes: as wide as the bytes of a row of samples, or wider, and of the frame's
  /// height. `out` is a view of I420 (Planes420<>), NV12, I422 (Planes422<>), Rgb565, Rgb555, Rgb444,
  /// Bgr24, Rgb24, Bgrx32 or Rgbx32 of outputSize() pixels. It has no alignment to keep to, but with
  /// rows and first pixels at multiples of 8 bytes it is written directly.
  ///
  /// Returns vekStsNoErr, or an error with nothing written.
  template <class Out>
  VekStatus process(const View<const RawByte>& frame, Out&& out, OnError onError = {}) {
    return process(frame, std::forward<Out>(out), OneAfterAnother(), onError);
  }

  /// The same in as many jobs as the settings say. `executor(n, job)` calls job(0) to job(n - 1), in
  /// any order and at the same time if it likes, and returns when all have returned. The picture does
  /// not depend on it. Where a picture is not resized in bands it is called twice.
  template <class Out, class Executor,
            std::enable_if_t<!std::is_convertible_v<Executor, OnError>, int> = 0>
  VekStatus process(const View<const RawByte>& frame, Out&& out, Executor&& executor,
                    OnError onError = {}) {
    const detail::Target target = detail::target(out);
    if (const VekStatus status = check(frame, target, onError); status < 0) return status;
    prepare();
    const Path& path = paths_[target.pixels == detail::Pixels::i422 ? 2
                              : isPlanar(target.pixels)             ? 1
                                                                    : 0];
    const int jobs = static_cast<int>(workers_.size());
    executor(jobs, [&](int i) {
      makeBands(frame, target, path, workers_[static_cast<std::size_t>(i)], i, jobs);
    });
    if (!inBands_) {
      const int parts = target.pixels == detail::Pixels::i422 ? 1 : jobs;
      executor(parts, [&](int i) { finishRows(target, i, parts); });
    }
    control_->decide(settings_.whiteBalance);
    return onError.success();
  }

 private:
  static constexpr int border = 2;  ///< samples around the region that bands are made from
  static constexpr int lead = 32;   ///< samples in front of column 0: a cache line
  static constexpr int trail = 32;  ///< samples behind the last column, for whole vectors
  static constexpr int none = INT32_MIN;
  static constexpr int smallestSide = 16;

  /// What the raw pipeline needs for one kind of output: a state for whole bands, one for the last.
  struct Path {
    std::unique_ptr<detail::TableAndMatrix> values;  ///< the states point at its table
    detail::RawState band, last;
  };

  /// The memory of a job.
  struct Worker {
    Image<Vek16u> samples;   ///< the band's rows of 10-bit RGGB, `border` more above and below
    Image<Vek16u> mixed;     ///< the same after the linear matrix
    Image<Vek8u> planes[3];  ///< what the raw pipeline makes of them, if in bands
    detail::Memory scratch;
  };

  static Vek16u* at(Image<Vek16u>& rows, int row) { return rows.row(row + border) + lead; }

  // ---- Construction ----

  void checkSource() {
    const Size size = settings_.size;
    bits_ = detail::bitsOf(settings_.format, settings_.bits);
    const auto bad = vekStsBadArgErr;
    if (size.width < 1 || size.height < 1 || size.width > 65536 || size.height > 65536) {
      OnError().failure(bad, "Isp", "size", "is %d x %d, not 1..65536 each", size.width,
                        size.height);
    }
    if (bits_ == 0 ||
        (settings_.format != Raw::plain16 && settings_.bits != 0 && settings_.bits != bits_)) {
      OnError().failure(bad, "Isp", "bits", "%d do not belong to the format %d", settings_.bits,
                        static_cast<int>(settings_.format));
    }
    if (settings_.order < Bayer::rggb || settings_.order > Bayer::bggr) {
      OnError().failure(bad, "Isp", "order", "%d is none", static_cast<int>(settings_.order));
    }
    frontEnd_.format = static_cast<int>(settings_.format);
    frontEnd_.bits = bits_;
    frontEnd_.order = static_cast<int>(settings_.order);
  }

  int whiteOf(int white) const { return white == 0 ? (1 << bits_) - 1 : white; }

  void checkRegion() {
    const auto bad = vekStsBadArgErr;
    const int order = static_cast<int>(settings_.order), scale = settings_.scale;
    const Size size = settings_.size;
    region_ = settings_.crop;
    if (region_.width == 0 && region_.height == 0) {
      if (vekiRawRegion(size, order, &region_) < 0) {
        OnError().failure(bad, "Isp", "size",
                          "%d x %d with order %d has no region that begins on a red sample",
                          size.width, size.height, order);
      }
    } else if (region_.x < 0 || region_.y < 0 || region_.width < 1 || region_.height < 1 ||
               region_.width > size.width - region_.x || region_.height > size.height - region_.y) {
      OnError().failure(bad, "Isp", "crop", "at (%d, %d), %d x %d, is not inside %d x %d",
                        region_.x, region_.y, region_.width, region_.height, size.width,
                        size.height);
    } else if ((region_.x & 1) != (order & 1) || (region_.y & 1) != order >> 1) {
      OnError().failure(bad, "Isp", "crop",
                        "begins at (%d, %d); red samples are in columns 2n%s and rows 2n%s",
                        region_.x, region_.y, order & 1 ? " + 1" : "", order >> 1 ? " + 1" : "");
    } else if ((region_.width | region_.height) & 1) {
      OnError().failure(bad, "Isp", "crop", "of %d x %d has an odd side", region_.width,
                        region_.height);
    }
    if (scale != 1 && scale != 2 && scale != 4) {
      OnError().failure(bad, "Isp", "scale", "is %d, not 1, 2 or 4", scale);
    }
    // What reduced pictures are whole blocks of.
    region_.width -= scale == 1 ? 0 : region_.width % (4 * scale);
    region_.height -= scale == 1 ? 0 : region_.height % (2 * scale);
    if (region_.width < smallestSide || region_.height < smallestSide) {
      OnError().failure(bad, "Isp", "crop", "leaves %d x %d samples, not %d a side", region_.width,
                        region_.height, smallestSide);
    }
  }

  void checkOutput() {
    const auto bad = vekStsBadArgErr;
    planeSize_ = {region_.width / settings_.scale, region_.height / settings_.scale};
    output_ = settings_.output;
    if (output_.width == 0 && output_.height == 0) output_ = planeSize_;
    if (output_.width < 2 || output_.height < 2 || output_.width > 65536 ||
        output_.height > 65536) {
      OnError().failure(bad, "Isp", "output", "is %d x %d, not 2..65536 each", output_.width,
                        output_.height);
    }
    if (settings_.rotation < Rotation::none || settings_.rotation > Rotation::mirrorTopBottom) {
      OnError().failure(bad, "Isp", "rotation", "%d is none", static_cast<int>(settings_.rotation));
    }
    if (settings_.jobs < 1 || settings_.jobs > 1024) {
      OnError().failure(bad, "Isp", "jobs", "is %d, not in 1..1024", settings_.jobs);
    }
    if (settings_.bandRows < 1)
      OnError().failure(bad, "Isp", "bandRows", "is %d", settings_.bandRows);
    inBands_ = bandUnit() != 0;
    chooseBands();
  }

  /// Bands of as many rows as the settings say, or, in several jobs, of up to a third more or less where the
  /// job with most rows then has fewer: of 1080 rows two jobs have 23 and 22 bands of 24, but each 17 of 32.
  void chooseBands() {
    const int unit = (inBands_ ? bandUnit() : 8) * settings_.scale;
    const int wanted = detail::roundUp(std::min(settings_.bandRows, region_.height), unit);
    const auto bandsOf = [&](int rows) { return (region_.height + rows - 1) / rows; };
    const auto mostRows = [&](int rows) {
      return std::int64_t{rows} * ((bandsOf(rows) + settings_.jobs - 1) / settings_.jobs);
    };
    int best = wanted;
    const int third = settings_.jobs > 1 ? wanted / 3 / unit : 0;
    for (int n = third; n >= -third; --n) {
      if (mostRows(wanted + n * unit) < mostRows(best)) best = wanted + n * unit;
    }
    bandRows_ = std::min(best, region_.height);
    bands_ = bandsOf(bandRows_);
  }

  /// Rows of planes that bands are made of: whole blocks, and 8 n rows of the picture, which begin at
  /// aligned addresses where they become columns. 0 if no band can be resized by itself.
  int bandUnit() const {
    if (!isResized()) return 8;
    const std::int64_t from = planeSize_.height, to = output_.height;
    // The rows below a band are not there for its last rows; and where a band begins, its sampling
    // begins anew, which is right if the steps of a band add up to its height exactly.
    const std::int64_t step = samplingSteps(planeSize_, output_).y;
    if (from <= to || to % 2 != 0 || step * to != from * 65536) return 0;
    for (int rows = 8; rows <= 128; rows += 8) {
      if (rows * to % (8 * from) == 0) return rows;
    }
    return 0;
  }

  void makeBuffers() {
    const int rows = bandRows_ + 2 * border;
    const Size samples = {lead + region_.width + trail, rows};
    const std::size_t jobs = static_cast<std::size_t>(std::min(settings_.jobs, bands_));
    if (!inBands_) makePlanes(planes_, planeSize_.height);
    workers_.resize(jobs);
    for (Worker& worker : workers_) {
      for (Image<Vek16u>* buffer : {&worker.samples, &worker.mixed}) {
        *buffer = Image<Vek16u>(samples);
        std::memset(buffer->data(), 0,
                    static_cast<std::size_t>(buffer->stepBytes()) * static_cast<std::size_t>(rows));
      }
      if (!inBands_) continue;
      makePlanes(worker.planes, bandRows_ / settings_.scale);
      worker.scratch = memory(finish(bandRows_ / settings_.scale).scratchBytes());
    }
    if (!inBands_) workers_[0].scratch = memory(finish(planeSize_.height).scratchBytes());
  }

  /// Chroma planes are as high as luma for 4:2:2.
  void makePlanes(Image<Vek8u>* planes, int rows) const {
    for (int i = 0; i < 3; ++i) {
      planes[i] = Image<Vek8u>({i == 0 ? planeSize_.width : planeSize_.width / 2, rows});
    }
  }

  static detail::Memory memory(std::size_t bytes) {
    detail::Memory result(bytes);
    if (result.data() == nullptr) {
      OnError().failure(vekStsMemAllocErr, "Isp", "output", "needs %lld bytes, more than there are",
                        static_cast<long long>(bytes));
    }
    return result;
  }

  std::array<Path, 3> makePaths(const ToneTable& curve, const CameraColor& color) const {
    Matrix3 after = identityMatrix;
    if (color.place == MatrixPlace::afterCurve) {
      CameraColor fixed = color;
      fixed.gains = {0, 0, 0};
      after = matrixAfterCurve(adaptedMatrix(fixed, {}), curve);
    }
    const bool isFull = settings_.range == Range::full;
    const detail::Planar ycc = isFull ? detail::Planar::full : detail::Planar::studio;
    std::array<Path, 3> paths;
    const detail::Planar kinds[] = {detail::Planar::towardsRgb, ycc, ycc};
    const int lastRows = region_.height - (bands_ - 1) * bandRows_;
    for (std::size_t i = 0; i < 3; ++i) {
      paths[i].values =
          std::make_unique<detail::TableAndMatrix>(detail::tableAndMatrix(curve, after, kinds[i]));
      const int format = i == 2 ? vekiChroma422 : vekiChroma420;
      paths[i].band = makeState(*paths[i].values, format, bandRows_);
      paths[i].last = makeState(*paths[i].values, format, lastRows);
    }
    return paths;
  }

  detail::RawState makeState(const detail::TableAndMatrix& values, int chromaFormat,
                             int rows) const {
    VekiRggbColorParam color = {};
    color.gammaMode = vekiGammaModeTable;
    color.gammaTable[0] = values.table.data();
    color.colorMatrix = values.matrix.data();
    const Image<Vek8u>* const planes = inBands_ ? workers_[0].planes : planes_;
    VekiRggbGeometry geometry = {};
    geometry.srcStep = workers_[0].samples.stepBytes();
    geometry.srcWidth = region_.width;
    geometry.srcHeight = rows;
    for (int i = 0; i < 3; ++i) geometry.dstStep[i] = planes[i].stepBytes();
    geometry.dstWidth = planeSize_.width;
    geometry.dstHeight = rows / settings_.scale;
    geometry.filterMode = settings_.scale == 1 ? vekiFilterModeDemosaic : vekiFilterModeReduce;
    geometry.chromaFormat = chromaFormat;
    geometry.srcBorderValid = 1;
    VekiRggbToYCbCrState* state = nullptr;
    const VekStatus status = vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&color, &geometry, &state);
    if (status < 0)
      OnError().failure(status, "Isp", "color", "needs a state: %s", vekStatusString(status));
    return detail::RawState(state);
  }

  void take(std::array<Path, 3>&& paths) { paths_ = std::move(paths); }

  // ---- Bands ----

  bool isResized() const {
    return output_.width != planeSize_.width || output_.height != planeSize_.height;
  }

  /// Rows of the resized picture, before it is rotated, that `rows` rows of planes become.
  int resizedRows(int rows) const {
    return static_cast<int>(std::int64_t{rows} * output_.height / planeSize_.height);
  }

  /// What `rows` rows of planes go through.
  detail::Finish finish(int rows) const {
    return {{planeSize_.width, rows},
            {output_.width, resizedRows(rows)},
            settings_.rotation,
            isResized() ? Interpolation::linear : Interpolation::nearest};
  }

  /// Samples of the frame beside the region that are there; where they are not, the region is mirrored.
  int columnsBefore() const { return std::min(region_.x & ~1, border); }
  int columnsAfter() const {
    return std::min((settings_.size.width - region_.x - region_.width) & ~1, border);
  }
  bool hasRow(int row) const {
    const int y = region_.y + row;
    return y >= 0 && y < settings_.size.height;
  }

  /// What does not change from band to band.
  void prepare() {
    const ColorGains now = gains();
    const double least = std::min({now.red, now.green, now.blue}) / digitalGain_;
    const double wanted[4] = {now.red, now.green, now.green, now.blue};
    for (std::size_t i = 0; i < 4; ++i) {
      const int range = whiteOf(settings_.white) - frontEnd_.black[i];
      const double whole = 4096 * 1023. / std::ldexp(range, 10 - bits_);
      frontEnd_.gain[i] =
          static_cast<Vek16u>(std::min(std::ceil(whole * wanted[i] / least), 65535.));
    }
    isMixed_ = color_.place == MatrixPlace::linear && matrix() != identityMatrix;
    if (isMixed_) matrix_ = detail::bayerMatrix(matrix());
  }

  void makeBands(const View<const RawByte>& frame, const detail::Target& target, const Path& path,
                 Worker& worker, int job, int jobs) {
    const auto first = [&](int j) { return static_cast<int>(std::int64_t{bands_} * j / jobs); };
    for (int band = first(job); band < first(job + 1); ++band) {
      const int y = band * bandRows_, rows = std::min(bandRows_, region_.height - y);
      readBand(frame, worker, y, rows, band != first(job));
      for (int row = 0; row < rows; row += 2) {
        control_->take((y + row) / 2, at(worker.samples, row), at(worker.samples, row + 1));
      }
      Image<Vek16u>& source = isMixed_ ? worker.mixed : worker.samples;
      if (isMixed_) applyMatrix(worker, rows);
      if (isDirect(target.pixels)) {
        makePixels(source, target.at(0, y), rows, worker);
        continue;
      }
      Vek8u* planes[3];
      for (int i = 0; i < 3; ++i) {
        const int rowsPerRow = i > 0 && target.pixels != detail::Pixels::i422 ? 2 : 1;
        planes[i] =
            inBands_ ? worker.planes[i].data() : planes_[i].row(y / settings_.scale / rowsPerRow);
      }
      veki10RGGBtoYCbCr_RotRsz_8u_P3R(at(source, 0), planes,
                                      (band == bands_ - 1 ? path.last : path.band).get());
      if (inBands_) finishBand(target, worker, y, rows);
    }
  }

  /// Whether pixels are made without YCbCr in between: each sample becomes a pixel of three or four bytes.
  bool isDirect(detail::Pixels pixels) const {
    return pixels >= detail::Pixels::bgr24 && settings_.scale == 1 && !isResized() &&
           settings_.rotation == Rotation::none && color_.place == MatrixPlace::linear;
  }

  void makePixels(Image<Vek16u>& source, const detail::Target& target, int rows, Worker& worker) {
    const bool is24 =
        target.pixels == detail::Pixels::bgr24 || target.pixels == detail::Pixels::rgb24;
    const bool isBgr =
        target.pixels == detail::Pixels::bgr24 || target.pixels == detail::Pixels::bgrx32;
    const Size size = {region_.width, rows};
    Vek8u* const made = is24 ? target.planes[0] : static_cast<Vek8u*>(worker.scratch.data());
    const int step = is24 ? target.steps[0] : detail::roundUp(3 * size.width, 64);
    vekiDemosaic_10RGGB_16u8u_C1C3R(at(source, 0), source.stepBytes(), made, step, size,
                                    bytes_.data(), isBgr ? vekiChannelsBGR : vekiChannelsRGB, 1);
    if (is24) return;
    constexpr int kept[] = {0, 1, 2, 3};
    vekiPermuteChannels_8u_C3C4R(made, step, target.planes[0], target.steps[0], size, kept, 255);
  }

  /// Rows y - 2 to y + rows + 1 of the region as 10-bit RGGB, without dead samples. If the worker's last
  /// band was the one above, it has four of them.
  void readBand(const View<const RawByte>& frame, Worker& worker, int y, int rows, bool continues) {
    int top = -border;  // the first row that is read, from the band's first one
    if (continues) {
      for (int row = -border; row < border; ++row) {
        std::memcpy(at(worker.samples, row) - lead, at(worker.samples, row + bandRows_) - lead,
                    static_cast<std::size_t>(worker.samples.rowBytes()));
      }
      top = border;
    } else if (!hasRow(y - border)) {
      top = 0;
    }
    const int bottom = hasRow(y + rows + 1) ? rows + border : rows;
    const int before = columnsBefore(), after = columnsAfter();
    const VekiRect part = {region_.x - before, region_.y + y + top, before + region_.width + after,
                           bottom - top};
    if (part.height > 0) {
      vekiRawTo10RGGB_8u16u_C1R(frame.data(), frame.stepBytes(), part,
                                at(worker.samples, top) - before, worker.samples.stepBytes(),
                                &frontEnd_);
      correct(worker, y, top, bottom);
    }
    for (int row = top; row < bottom; ++row) mirrorColumns(at(worker.samples, row));
    const auto copy = [&](int from, int to) {
      std::memcpy(at(worker.samples, to) - lead, at(worker.samples, from) - lead,
                  static_cast<std::size_t>(worker.samples.rowBytes()));
    };
    for (int i = 1; i <= border; ++i) {
      if (!continues && !hasRow(y - border)) copy(i, -i);
      if (bottom == rows) copy(rows - 1 - i, rows - 1 + i);
    }
  }

  void correct(Worker& worker, int y, int top, int bottom) {
    const auto first =
        std::lower_bound(dead_.begin(), dead_.end(), y + top,
                         [](const detail::DeadSample& d, int row) { return d.row < row; });
    for (auto d = first; d != dead_.end() && d->row < y + bottom; ++d) {
      Vek16u* const row = at(worker.samples, d->row - y);
      if (d->left == none && d->right == none) continue;
      const int left = row[d->left == none ? d->right : d->left];
      const int right = row[d->right == none ? d->left : d->right];
      row[d->column] = static_cast<Vek16u>((left + right + 1) >> 1);
    }
  }

  /// About the outermost column, which keeps the order of colours.
  void mirrorColumns(Vek16u* row) const {
    const int last = region_.width - 1;
    for (int i = 1; i <= border; ++i) {
      if (columnsBefore() == 0) row[-i] = row[i];
      if (columnsAfter() == 0) row[last + i] = row[last - i];
    }
  }

  /// To the band, and to a sample around it.
  void applyMatrix(Worker& worker, int rows) {
    vekiColorMatrix_10Bayer_16u_C1R(
        at(worker.samples, -1) - 2, worker.samples.stepBytes(), at(worker.mixed, -1) - 2,
        worker.mixed.stepBytes(), {region_.width + 4, rows + 2}, matrix_.data(), vekiBayerGBRG, 1);
  }

  void finishBand(const detail::Target& target, Worker& worker, int y, int rows) {
    const detail::Finish finish = this->finish(rows / settings_.scale);
    const int first = resizedRows(y / settings_.scale), count = finish.to.height;
    const Rect part = this->finish(planeSize_.height).place({first, count});
    finish.run(source(worker.planes), target.at(part.x, part.y),
               static_cast<Vek8u*>(worker.scratch.data()), {0, count});
  }

  /// Resizes what job `i` of `jobs` has of the whole planes, in pairs of rows.
  void finishRows(const detail::Target& target, int i, int jobs) {
    const auto first = [&](int j) {
      return j == jobs ? output_.height
                       : static_cast<int>(std::int64_t{output_.height / 2} * j / jobs) * 2;
    };
    if (first(i) == first(i + 1)) return;
    finish(planeSize_.height)
        .run(source(planes_), target, static_cast<Vek8u*>(workers_[0].scratch.data()),
             {first(i), first(i + 1) - first(i)});
  }

  static detail::SourcePlanes source(const Image<Vek8u>* planes) {
    return {{planes[0].data(), planes[1].data(), planes[2].data()},
            {planes[0].stepBytes(), planes[1].stepBytes(), planes[2].stepBytes()}};
  }

  // ---- Calls ----

  VekStatus check(const View<const RawByte>& frame, const detail::Target& target,
                  OnError onError) const {
    const std::int64_t bytes = rawRowBytes(settings_.format, settings_.size.width);
    if (frame.empty())
      return onError.failure(vekStsNullPtrErr, "Isp::process", "frame", "is empty");
    if (frame.width() < bytes) {
      return onError.failure(vekStsStrideErr, "Isp::process", "frame",
                             "has rows of %d bytes; %d samples take %d", frame.width(),
                             settings_.size.width, static_cast<int>(bytes));
    }
    if (frame.height() < settings_.size.height) {
      return onError.failure(vekStsSizeErr, "Isp::process", "frame", "has %d rows, not %d",
                             frame.height(), settings_.size.height);
    }
    const Size size = outputSize();
    if (target.planes[0] == nullptr)
      return onError.failure(vekStsNullPtrErr, "Isp::process", "out", "is empty");
    if (target.size.width != size.width || target.size.height != size.height) {
      return onError.failure(vekStsSizeErr, "Isp::process", "out", "is %d x %d, not %d x %d",
                             target.size.width, target.size.height, size.width, size.height);
    }
    if (isPlanar(target.pixels) && ((size.width | size.height) & 1) != 0) {
      return onError.failure(vekStsSizeErr, "Isp::process", "out",
                             "shares chroma, which pictures of %d x %d cannot", size.width,
                             size.height);
    }
    return vekStsNoErr;
  }

  IspSettings settings_;
  int bits_ = 0;  ///< of a sample
  Rect region_ = {};
  Size planeSize_ = {};  ///< of what the raw pipeline makes of the region
  Size output_ = {};     ///< before rotation
  int bandRows_ = 0, bands_ = 0;
  bool inBands_ = true;  ///< bands become rows of the picture; if not, they are put together first
  VekiRawFrontEnd frontEnd_ = {};
  std::vector<detail::DeadSample> dead_;
  ToneTable curve_ = {};
  GammaTable10 bytes_ = {};  ///< the curve, for pixels that are made without YCbCr
  CameraColor color_;
  std::array<Vek16s, 9> matrix_ = {};  ///< if isMixed_: of the frame that is processed
  bool isMixed_ = false;
  std::array<Path, 3> paths_;
  std::vector<Worker> workers_;
  Image<Vek8u> planes_[3];  ///< of the whole picture if not in bands

  std::unique_ptr<detail::FrameControl> control_;
  double digitalGain_ = 1;
};

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_ISP_HPP
