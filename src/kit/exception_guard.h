// Where exceptions end.
#pragma once

#include "kit/new_file.h"
#include "kit/progress_reporter.h"
#include "quorkit.h"

#include <new>
#include <stdexcept>
#include <system_error>
#include <type_traits>

namespace quorkit {

/// Makes the call and turns what leaves it into a status. A path that is no text in the encoding of
/// the file system leaves it as std::system_error.
/// @param call  returns a status, or nothing if it always succeeds
template <typename Call>
QuorkitStatus guarded(const Call& call) noexcept {
  try {
    if constexpr (std::is_void_v<decltype(call())>) {
      call();
      return QUORKIT_DONE;
    } else {
      return call();
    }
  } catch (const std::bad_alloc&) {
    return QUORKIT_OUT_OF_MEMORY;
  } catch (const std::length_error&) {
    return QUORKIT_TOO_LARGE;
  } catch (const Cancelled&) {
    return QUORKIT_CANCELLED;
  } catch (const FileError&) {
    return QUORKIT_FILE;
  } catch (const std::system_error&) {
    return QUORKIT_FILE;
  } catch (...) {
    return QUORKIT_INTERNAL;
  }
}

}  // namespace quorkit
