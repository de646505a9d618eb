#include "playground.h"

#include <vek/vek.h>

namespace playground {
namespace {

std::string keptText;

}  // namespace

std::string hexadecimal(uint64_t number) {
  std::string digits(16, '0');
  for (size_t i = 16; i-- > 0; number >>= 4) digits[i] = "0123456789abcdef"[number & 15];
  return digits;
}

std::string quoted(std::string_view text) {
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      json += '\\', json += c;
    } else if (static_cast<unsigned char>(c) < ' ') {
      json += "\\u" + hexadecimal(static_cast<unsigned char>(c)).substr(12);
    } else {
      json += c;
    }
  }
  return json + '"';
}

std::string errorAsJson(const std::exception& error) {
  std::string json = "{\"error\":" + quoted(error.what());
  if (const auto* const inChain = dynamic_cast<const chain::Error*>(&error)) {
    json += ",\"position\":" + std::to_string(inChain->position()) +
            ",\"length\":" + std::to_string(inChain->length());
  }
  return json + "}";
}

const char* kept(std::string text) {
  keptText = std::move(text);
  return keptText.c_str();
}

PLAYGROUND_EXPORT const char* level() {
  return vekLevelName(vekLevel());
}

PLAYGROUND_EXPORT const char* version() {
  return vekVersionString();
}

}  // namespace playground
