/* A raw frame to a picture with the right colours, by the C interface alone.
 *
 *     raw_to_ppm FRAME.raw WIDTH HEIGHT BLACK RED BLUE >PICTURE.ppm
 *
 * The frame is packed RAW10 of an RGGB sensor, rows without padding; WIDTH is a multiple of 4 and HEIGHT
 * is even. BLACK is its black level. RED and BLUE are what red and blue have to be multiplied by for a
 * grey to be grey, 1 or more: an automatic white balance would find them. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vek/camera.h>
#include <vek/image.h>

/* Rows of samples have 32 in front (64 bytes) and 32 behind: room for the border, and rows stay aligned. */
enum { lead = 32, trail = 32 };

/* What the samples of the frame go through before colours are made: the tone curve, and an offset.
 *
 * The raw pipeline makes Y = (236 g) >> 8 of a grey with the table's entry g, by the matrix below. Video has
 * black at Y = 16 and white at 235, and the pipeline adds nothing itself: so the table starts at 18, the
 * least g with (236 * 18) >> 8 = 16, and ends at 255, as (236 * 255) >> 8 = 235. In between it is the least
 * g that gives the Y that the curve asks for. The offset is the same for red, green and blue, so that it
 * vanishes from Cb and Cr, whose rows of the matrix sum to 0. */
static void makeTable(Vek8u table[1024]) {
  for (int i = 0; i < 1024; ++i) {
    const double light = i / 1023.;
    /* sRGB, what screens and picture files expect. The built-in curves would start at black = 0. */
    const double tone = light <= .0031308 ? 12.92 * light : 1.055 * pow(light, 1 / 2.4) - .055;
    const int y = (int)(16 + 219 * tone + .5);
    const int g = (y * 256 + 235) / 236;
    table[i] = (Vek8u)(g < 255 ? g : 255);
  }
}

/* The pipeline multiplies the matrix that it is given by its own one,
 *
 *     Y    77  143   29
 *     Cb  -30  -85  128         (in 1/256)
 *     Cr  128 -107  -21
 *
 * whose rows for Y and Cb do not sum to what video needs: with the identity a grey would be blue. What is
 * wanted is BT.601 for light that is 237.6 steps of the table (236 / 256 of which are the 219 of Y), in 1/256:
 *
 *     Y    71  138   27         sum 236: white is 235
 *     Cb  -41  -80  121         sum 0: a grey has Cb = 128
 *     Cr  121 -100  -20         sum 1: and Cr = 128 and a fraction, which is truncated; with a sum of 0
 *                               noise would make it half a step too low on average
 *
 * This is the inverse of the first matrix times the second one, in 1/256, so that the product is exactly the
 * second one. For a camera whose colours are not those of sRGB multiply the second matrix by the camera's
 * first; after the tone curve that is an approximation (vek/isp.hpp does better). */
static const Vek16s matrix[9] = {240, 4, -1, 3, 244, 0, -24, 3, 242};

static int fail(const char* what) {
  fprintf(stderr, "raw_to_ppm: %s\n", what);
  return 1;
}

int main(int argc, char** argv) {
  if (argc != 7) return fail("arguments: FRAME.raw WIDTH HEIGHT BLACK RED BLUE");
  const int width = atoi(argv[2]), height = atoi(argv[3]), black = atoi(argv[4]);
  const double red = atof(argv[5]), blue = atof(argv[6]);
  if (width < 16 || width > 16384 || width % 4 != 0 || height < 16 || height > 16384 ||
      height % 2 != 0)
    return fail("width or height is out of range, or not a multiple of 4 and of 2");
  if (black < 0 || black > 1000 || red < 1 || red > 8 || blue < 1 || blue > 8)
    return fail("black is not in 0..1000, or a gain not in 1..8");

  const int packedStep = width / 4 * 5;
  const int rowSamples = lead + width + trail;
  const int planeStep = (width + 63) / 64 * 64;
  const size_t planeBytes = (size_t)planeStep * (size_t)height;
  Vek8u* const packed = malloc((size_t)packedStep * (size_t)height);
  Vek16u* const samples =
      aligned_alloc(64, ((size_t)rowSamples * (size_t)(height + 2) * 2 + 63) / 64 * 64);
  Vek8u* const planes = aligned_alloc(64, 3 * planeBytes);
  Vek8u* const pixels = aligned_alloc(64, ((size_t)width * 3 * (size_t)height + 63) / 64 * 64);
  if (!packed || !samples || !planes || !pixels) return fail("out of memory");
  FILE* const file = fopen(argv[1], "rb");
  if (!file || fread(packed, (size_t)packedStep, (size_t)height, file) != (size_t)height)
    return fail("cannot read the frame");
  fclose(file);

  /* 1. Packed samples of any sensor become 10-bit ones. The black level is subtracted, and the gains make up
   * for it: what was saturated, 1023, is 1023 again. No gain is below that, or a highlight in which all
   * channels are saturated would turn pink. Gains are in 1/4096, in the order R, Gr, Gb, B. */
  const double whole = 4096. * 1023 / (1023 - black);
  VekiRawFrontEnd frontEnd = {.format = vekiRawCsi2_10, .bits = 10, .order = vekiBayerRGGB};
  const double gains[4] = {red, 1, 1, blue};
  for (int i = 0; i < 4; ++i) {
    const double gain = ceil(whole * gains[i]);
    frontEnd.black[i] = (Vek16u)black;
    frontEnd.gain[i] = (Vek16u)(gain < 65535 ? gain : 65535);
  }
  Vek16u* const first = samples + rowSamples + lead; /* one row above it is border */
  const VekiRect region = {0, 0, width, height};
  VekStatus status =
      vekiRawTo10RGGB_8u16u_C1R(packed, packedStep, region, first, 2 * rowSamples, &frontEnd);
  if (status < 0) return fail(vekStatusString(status));

  /* 2. One sample on every side, so that edges are interpolated like everything else. Column -1 is column 1
   * again, which has the same colour; rows likewise. */
  for (int y = 0; y < height; ++y) {
    Vek16u* const row = first + (size_t)y * (size_t)rowSamples;
    row[-1] = row[1];
    row[width] = row[width - 2];
  }
  const size_t rowBytes = (size_t)(width + 2) * 2;
  memcpy(first - rowSamples - 1, first + rowSamples - 1, rowBytes);
  memcpy(first + (size_t)height * (size_t)rowSamples - 1,
         first + (size_t)(height - 2) * (size_t)rowSamples - 1, rowBytes);

  /* 3. Tone curve, demosaicing, YCbCr 4:2:0. */
  Vek8u table[1024];
  makeTable(table);
  const VekiRggbColorParam color = {
      .gammaMode = vekiGammaModeTable, .gammaTable = {table}, .colorMatrix = matrix};
  const VekiRggbGeometry geometry = {.srcStep = 2 * rowSamples,
                                     .srcWidth = width,
                                     .srcHeight = height,
                                     .dstStep = {planeStep, planeStep, planeStep},
                                     .dstWidth = width,
                                     .dstHeight = height,
                                     .filterMode = vekiFilterModeDemosaic,
                                     .rotation = vekiRotNone,
                                     .chromaFormat = vekiChroma420,
                                     .srcBorderValid = 1};
  VekiRggbToYCbCrState* state = NULL;
  status = vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&color, &geometry, &state);
  if (status < 0) return fail(vekStatusString(status));
  Vek8u* ycc[3] = {planes, planes + planeBytes, planes + 2 * planeBytes};
  status = veki10RGGBtoYCbCr_RotRsz_8u_P3R(first, ycc, state);
  vekiFree_10RGGBtoYCbCr_RotRsz_P3R(state);
  if (status < 0) return fail(vekStatusString(status));

  /* 4. RGB, which expects black at Y = 16 and white at 235, as they are now. No resizing: one source sample
   * is 65536. BGR24 becomes the RGB24 of PPM. */
  status = vekiYCbCr420RszCscRotRGB_8u_P3C3R(ycc, geometry.dstStep, width, height, pixels,
                                             3 * width, width, height, vekiCsc420BGR24,
                                             vekiInterpolateNearest, vekiRotNone, 65536, 65536);
  if (status < 0) return fail(vekStatusString(status));
  const VekiSize size = {width, height};
  const int reversed[3] = {2, 1, 0};
  vekiPermuteChannels_8u_C3R(pixels, 3 * width, pixels, 3 * width, size, reversed);
  printf("P6\n%d %d\n255\n", width, height);
  fwrite(pixels, 3 * (size_t)width, (size_t)height, stdout);
  free(packed);
  free(samples);
  free(planes);
  free(pixels);
  return fflush(stdout) == 0 ? 0 : fail("cannot write");
}
