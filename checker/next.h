// The operation that a wrapper stands in front of.
#pragma once

namespace zox_check {

// The next definition of `name` behind the checker. Ends the process with a sentence when there is
// none: the program asked for an operation that nothing provides.
void* next_definition(const char* name);

template <class Function>
Function* next_function(const char* name) {
  return reinterpret_cast<Function*>(next_definition(name));
}

}  // namespace zox_check
