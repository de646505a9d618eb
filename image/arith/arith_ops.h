// What selects an operation and its scaling at compile time.
#pragma once

namespace vek::VEK_LEVEL {
namespace {

struct Sum {};
struct Difference {};
struct Product {};

struct ShiftRight {};
struct Plain {};
struct ShiftLeft {};

}  // namespace
}  // namespace vek::VEK_LEVEL
