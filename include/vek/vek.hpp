/** @file vek.hpp
 *  The C++ interface: every function of the C interface as an overload of one name per operation, chosen
 *  by the types of its views, and states as objects. C++17, header only; what is wrapped costs nothing.
 *
 *  - Arguments come in the order sources, destination, parameters. Without a destination an image is
 *    made and returned.
 *  - Sizes are compared before anything is touched. Unless a function says otherwise, source and
 *    destination have the same size.
 *  - The last argument is an `OnError`: what happens if the call is refused. Arguments with a default
 *    before it are then written out.
 *  - A function returns the C function's status, which is positive for results with a reservation.
 *  - What a function computes, to the bit, stands at the C function that its comment names. */
#ifndef VEK_VEK_HPP
#define VEK_VEK_HPP

#include "vek/cpp/aaa.hpp"
#include "vek/cpp/arith.hpp"
#include "vek/cpp/color.hpp"
#include "vek/cpp/dither.hpp"
#include "vek/cpp/filter.hpp"
#include "vek/cpp/front.hpp"
#include "vek/cpp/library.hpp"
#include "vek/cpp/moments.hpp"
#include "vek/cpp/preview.hpp"
#include "vek/cpp/raw.hpp"
#include "vek/cpp/stat.hpp"
#include "vek/cpp/transform.hpp"
#include "vek/cpp/warp.hpp"
#include "vek/view.hpp"

#endif  // VEK_VEK_HPP
