// GDCM checks by assertions that end the process, also what damaged files bring about.
#pragma once

#include <functional>

namespace zox::input::dicom {

// Whether the action came to its end, by itself or by throwing a std::exception (then false, too). After
// an abort the action's objects are leaked: for a process that reads one study and ends.
bool without_abort(const std::function<void()>& action);

}  // namespace zox::input::dicom
