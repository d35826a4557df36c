// How a call gives up: a status and one sentence, carried to the entry point by an exception.
#pragma once

#include <exception>
#include <new>
#include <string>

#include "interface.h"

namespace render {

class Failure : public std::exception {
 public:
  Failure(int status, std::string sentence) : status_(status), sentence_(std::move(sentence)) {}
  int status() const { return status_; }
  const char* what() const noexcept override { return sentence_.c_str(); }

 private:
  int status_;
  std::string sentence_;
};

[[noreturn]] void fail(int status, const std::string& sentence);
[[noreturn]] void reject(const std::string& sentence);  // ZOX_RENDER_BAD_ARGUMENT
inline void require(bool holds, const char* sentence) {
  if (!holds) reject(sentence);
}

// What zox_render_last_error answers on this thread. Long sentences are cut.
void remember_error(const char* sentence) noexcept;
const char* last_error() noexcept;

// Runs the body of an entry point: no exception leaves it.
template <class Body>
int guarded(const Body& body) noexcept {
  try {
    body();
    return ZOX_RENDER_OK;
  } catch (const Failure& failure) {
    remember_error(failure.what());
    return failure.status();
  } catch (const std::bad_alloc&) {
    remember_error(
        "Less than 64 megabytes (67108864 bytes) of working memory were wanted and could not be had.");
    return ZOX_RENDER_NO_MEMORY;
  } catch (const std::exception& error) {
    remember_error(error.what());
    return ZOX_RENDER_FAILED;
  } catch (...) {
    remember_error("The call failed for an unknown reason.");
    return ZOX_RENDER_FAILED;
  }
}

// A record that a caller gave: there, and of the size that its *_init function sets. A newer header may
// only append fields, so that a size of its own then tells which of them the caller knows.
template <class Record>
const Record& checked(const Record* record, const char* name) {
  if (!record) reject(std::string(name) + " is null.");
  if (record->record_size != sizeof(Record))
    reject(std::string(name) + " was not set up by its init function: its record_size is " +
           std::to_string(record->record_size) + " in place of " + std::to_string(sizeof(Record)) + ".");
  return *record;
}

}  // namespace render
