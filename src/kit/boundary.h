// Where exceptions end.
#pragma once

#include "kit/obj_file.h"
#include "kit/progress.h"
#include "quorkit.h"

#include <new>
#include <stdexcept>
#include <system_error>

namespace quorkit {

/// Makes the call and turns what leaves it into a status. A directory that is a text of no path
/// comes as std::system_error.
template <typename Call>
QuorkitStatus guarded(const Call& call) noexcept {
  try {
    call();
    return QUORKIT_DONE;
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
