// What the reading process tells the other: a description of a volume, or why there is none.
#pragma once

#include <string>

#include "format.h"

namespace zox::input {

std::string pack_found(const Found& found);
std::string pack_failure(const std::string& sentence);

// Empty where the message is none or has no end. Throws Failure where it is a failure.
std::optional<Found> unpack(const std::string& message);

}  // namespace zox::input
