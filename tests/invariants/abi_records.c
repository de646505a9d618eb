/* Prints size and alignment of every public record and offset and size of each field, which programs
 * that were compiled against the headers rely on. */
#include "vek/camera.h"
#include "vek/image.h"
#include "vek/vek.h"

#include <stddef.h>
#include <stdio.h>

#define RECORD(type)                                       \
  struct type##Alignment {                                 \
    char first;                                            \
    type second;                                           \
  };                                                       \
  printf(#type " %u aligned %u\n", (unsigned)sizeof(type), \
         (unsigned)offsetof(struct type##Alignment, second))
#define FIELD(type, name) \
  printf("  %u " #name " %u\n", (unsigned)offsetof(type, name), (unsigned)sizeof(((type*)0)->name))

static void printVekiSize(void) {
  RECORD(VekiSize);
  FIELD(VekiSize, width);
  FIELD(VekiSize, height);
}

static void printVekiRect(void) {
  RECORD(VekiRect);
  FIELD(VekiRect, x);
  FIELD(VekiRect, y);
  FIELD(VekiRect, width);
  FIELD(VekiRect, height);
}

static void printVekiPoint(void) {
  RECORD(VekiPoint);
  FIELD(VekiPoint, x);
  FIELD(VekiPoint, y);
}

static void printVekLibraryVersion(void) {
  RECORD(VekLibraryVersion);
  FIELD(VekLibraryVersion, major);
  FIELD(VekLibraryVersion, minor);
  FIELD(VekLibraryVersion, majorBuild);
  FIELD(VekLibraryVersion, build);
  FIELD(VekLibraryVersion, targetCpu);
  FIELD(VekLibraryVersion, Name);
  FIELD(VekLibraryVersion, Version);
  FIELD(VekLibraryVersion, BuildDate);
}

static void printVekiRawFrontEnd(void) {
  RECORD(VekiRawFrontEnd);
  FIELD(VekiRawFrontEnd, format);
  FIELD(VekiRawFrontEnd, bits);
  FIELD(VekiRawFrontEnd, order);
  FIELD(VekiRawFrontEnd, black);
  FIELD(VekiRawFrontEnd, gain);
}

static void printVekiAEParams(void) {
  RECORD(VekiAEParams);
  FIELD(VekiAEParams, mode);
  FIELD(VekiAEParams, pWindows);
  FIELD(VekiAEParams, pWeights);
  FIELD(VekiAEParams, numWindows);
  FIELD(VekiAEParams, histCountThresh);
  FIELD(VekiAEParams, histSpreadThresh);
  FIELD(VekiAEParams, darkThresh);
  FIELD(VekiAEParams, brightThresh);
  FIELD(VekiAEParams, target);
  FIELD(VekiAEParams, tolerance);
  FIELD(VekiAEParams, scaleMultiplier);
  FIELD(VekiAEParams, stepSize);
  FIELD(VekiAEParams, scaleMin);
  FIELD(VekiAEParams, scaleMax);
  FIELD(VekiAEParams, stepMin);
  FIELD(VekiAEParams, stepMax);
}

static void printVekiAWBParams(void) {
  RECORD(VekiAWBParams);
  FIELD(VekiAWBParams, method);
  FIELD(VekiAWBParams, numWindows);
  FIELD(VekiAWBParams, pWindows);
  FIELD(VekiAWBParams, pWeights);
  FIELD(VekiAWBParams, refRatioR);
  FIELD(VekiAWBParams, refRatioB);
  FIELD(VekiAWBParams, holdTolR);
  FIELD(VekiAWBParams, holdTolB);
  FIELD(VekiAWBParams, validTolR);
  FIELD(VekiAWBParams, validTolB);
  FIELD(VekiAWBParams, wpdLimit1);
  FIELD(VekiAWBParams, wpdLimit2);
  FIELD(VekiAWBParams, wpdLimit3);
  FIELD(VekiAWBParams, wpdLow);
  FIELD(VekiAWBParams, wpdHigh);
  FIELD(VekiAWBParams, minWhiteCount);
  FIELD(VekiAWBParams, maxGainStep);
  FIELD(VekiAWBParams, gainMin);
  FIELD(VekiAWBParams, gainMax);
  FIELD(VekiAWBParams, defaultGainR);
  FIELD(VekiAWBParams, defaultGainG);
  FIELD(VekiAWBParams, defaultGainB);
}

static void printVekiDeadPixel(void) {
  RECORD(VekiDeadPixel);
  FIELD(VekiDeadPixel, row);
  FIELD(VekiDeadPixel, column);
}

static void printVekiRggbColorParam(void) {
  RECORD(VekiRggbColorParam);
  FIELD(VekiRggbColorParam, gammaMode);
  FIELD(VekiRggbColorParam, gammaCurve);
  FIELD(VekiRggbColorParam, gammaTable);
  FIELD(VekiRggbColorParam, deadPixels);
  FIELD(VekiRggbColorParam, numDeadPixels);
  FIELD(VekiRggbColorParam, rowOffset);
  FIELD(VekiRggbColorParam, colOffset);
  FIELD(VekiRggbColorParam, reserved);
  FIELD(VekiRggbColorParam, colorMatrix);
}

static void printVekiRggbGeometry(void) {
  RECORD(VekiRggbGeometry);
  FIELD(VekiRggbGeometry, srcStep);
  FIELD(VekiRggbGeometry, srcWidth);
  FIELD(VekiRggbGeometry, srcHeight);
  FIELD(VekiRggbGeometry, dstStep);
  FIELD(VekiRggbGeometry, dstWidth);
  FIELD(VekiRggbGeometry, dstHeight);
  FIELD(VekiRggbGeometry, filterMode);
  FIELD(VekiRggbGeometry, rotation);
  FIELD(VekiRggbGeometry, chromaFormat);
  FIELD(VekiRggbGeometry, srcBorderValid);
}

int main(void) {
  printVekiSize();
  printVekiRect();
  printVekiPoint();
  printVekLibraryVersion();
  printVekiRawFrontEnd();
  printVekiAEParams();
  printVekiAWBParams();
  printVekiDeadPixel();
  printVekiRggbColorParam();
  printVekiRggbGeometry();
  return 0;
}
