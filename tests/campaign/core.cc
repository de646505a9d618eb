// Allocator, versions, division.
#include "vek/camera.h"
#include "vek/image.h"

#include <cstring>

#include "core/level.h"
#include "tests/campaign/campaign.h"

namespace vek::test {
namespace {

/// Takes memory, fills it and gives it back; with the size below 1 there must be none.
template <void* (*take)(int), void (*give)(void*)>
VekStatus useMemory(const Value* v) {
  const int size = as<int>(v[0]);
  void* const memory = take(size);
  if ((memory != nullptr) != (size > 0)) return vekStsMemAllocErr;
  if (memory != nullptr) memset(memory, 0xFF, static_cast<size_t>(size));
  give(memory);
  return vekStsNoErr;
}

template <const VekLibraryVersion* (*version)()>
VekStatus readVersion(const Value*) {
  const VekLibraryVersion* const v = version();
  const bool fine = v == version() && v->Name[0] != 0 && v->Version[0] != 0 && v->BuildDate[0] != 0;
  return fine ? vekStsNoErr : vekStsBadArgErr;
}

VekStatus readLevel(const Value*) {
  const int level = vekLevel();
  const bool fine = level == static_cast<int>(cpuLevel()) && level <= vekLevelLimit() &&
                    strcmp(vekLevelName(level), levelNames[level]) == 0;
  return fine ? vekStsNoErr : vekStsBadArgErr;
}

VekStatus readVersionString(const Value*) {
  return vekVersionString() == vekVersionString() && strlen(vekVersionString()) > 0
             ? vekStsNoErr
             : vekStsBadArgErr;
}

VekStatus readStatusString(const Value* v) {
  const char* const text = vekStatusString(as<int>(v[0]));
  return text != nullptr && strlen(text) > 0 ? vekStsNoErr : vekStsBadArgErr;
}

template <class Rem, class Number, Number (*divide)(Number, Number, Rem*)>
VekStatus useDivision(const Value* v) {
  *as<Vek32u*>(v[3]) = divide(as<Number>(v[0]), as<Number>(v[1]), as<Rem*>(v[2]));
  return vekStsNoErr;
}

template <class Rem>
void drawDivision(Case& c) {
  for (int i = 0; i < 2; ++i) {
    const uint64_t bits = c.random.bits();
    c.number(static_cast<Vek32u>(bits) >> c.random.in(0, 31));
  }
  if (c.random.chance(20)) {
    c.number(0);  // a null pointer
  } else {
    c.pointer(c.memory(Use::out, {sizeof(Rem), 1, 0}, sizeof(Rem), sizeof(Rem)), 0);
  }
  c.pointer(c.memory(Use::out, {4, 1, 0}, 4, 4), 0);
}

void drawAmount(Case& c) {
  c.number(c.random.in(-2, 5000));
}

template <class Rem>
void prepareDivision(Arguments& a) {
  a.number(200);
  a.number(7);
  a.pointer(a.keep(std::vector<Rem>(1)));
  a.pointer(a.keep(std::vector<Vek32u>(1)));
}

void prepareAmount(Arguments& a) {
  a.number(256);
}

void prepareNothing(Arguments&) {}

}  // namespace

std::vector<Record> coreRecords() {
  const std::function<void(Case&)> nothing = [](Case&) {};
  const auto once = [](const Record& record, std::function<void(Arguments&)> prepare) {
    return with(record, {{"", std::move(prepare)}});
  };
  std::vector<Record> records = {
      once({"vekMalloc", useMemory<vekMalloc, vekFree>, drawAmount, {"vekFree"}}, prepareAmount),
      once({"vekiMalloc", useMemory<vekiMalloc, vekiFree>, drawAmount, {"vekiFree"}},
           prepareAmount),
      once({"vekiGetLibVersion", readVersion<vekiGetLibVersion>, nothing}, prepareNothing),
      once({"_vekGetLibVersion_VekCam", readVersion<_vekGetLibVersion_VekCam>, nothing},
           prepareNothing),
      once({"vekLevel", readLevel, nothing, {"vekLevelName", "vekLevelLimit"}}, prepareNothing),
      once({"vekVersionString", readVersionString, nothing}, prepareNothing),
      once({"vekStatusString", readStatusString, [](Case& c) { c.number(c.random.in(-64, 64)); }},
           [](Arguments& a) { a.number(vekStsAwbNoData); }),
      once({"_vekDiv_8u", useDivision<Vek8u, unsigned, _vekDiv_8u>, drawDivision<Vek8u>},
           prepareDivision<Vek8u>),
      once({"_vekDiv_16u", useDivision<Vek16u, unsigned, _vekDiv_16u>, drawDivision<Vek16u>},
           prepareDivision<Vek16u>),
      once({"_vekDiv_32u", useDivision<Vek32u, Vek32u, _vekDiv_32u>, drawDivision<Vek32u>},
           prepareDivision<Vek32u>)};
  records[0].mayAllocate = records[1].mayAllocate = true;
  return records;
}

}  // namespace vek::test
