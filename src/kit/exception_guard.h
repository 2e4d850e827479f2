// Where exceptions end.
#pragma once

#include "quorkit.h"

#include <cassert>
#include <exception>
#include <type_traits>

namespace quorkit {

/// Turns the exception that is being handled into a status, and says more of it.
/// @param errorOut  may be null
QuorkitStatus report(QuorkitError* errorOut) noexcept;

/// Makes the call and turns what leaves it into a status. A path that is no text in the encoding of
/// the file system leaves it as std::system_error.
/// @param errorOut  receives why the call failed; may be null
/// @param call      checks its arguments first: throws BadArgument
template <typename Call>
QuorkitStatus guarded(QuorkitError* errorOut, const Call& call) noexcept {
  static_assert(std::is_void_v<decltype(call())>);
  try {
    call();
    return QUORKIT_DONE;
  } catch (...) {
    return report(errorOut);
  }
}

}  // namespace quorkit
