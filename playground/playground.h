// What the sources of the WebAssembly module share.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "chain/chain.h"

/// A function that the worker calls by its name.
#define PLAYGROUND_EXPORT extern "C" __attribute__((used, visibility("default")))

namespace playground {

/// A JSON string.
std::string quoted(std::string_view text);
/// 16 digits.
std::string hexadecimal(uint64_t number);

/// {"error":...}, with "position" and "length" of what is wrong in a chain's text.
std::string errorAsJson(const std::exception& error);
/// Text that stays until the next one is kept.
const char* kept(std::string text);

/// f() as text for the worker, or the error that it threw.
template <class F>
const char* answer(const F& f) {
  try {
    return kept(f());
  } catch (const std::exception& error) {
    return kept(errorAsJson(error));
  }
}

/// A picture that chains and the worker call by this name; "in" is the input of chains.
void setPicture(std::string_view name, chain::Picture picture);

}  // namespace playground
