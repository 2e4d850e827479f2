#include "kit/exception_guard.h"

#include "kit/bad_argument.h"
#include "kit/new_file.h"
#include "kit/progress_reporter.h"

#include <cerrno>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace quorkit {
namespace {

/// In English whatever the locale, of the errors that a user can do something about.
std::string_view causeOf(int error) {
  switch (error) {
    case ENOENT:
      return "no such file or directory";
    case ENOTDIR:
      return "a part of the path is not a directory";
    case EISDIR:
      return "is a directory";
    case EACCES:
    case EPERM:
      return "permission denied";
    case EROFS:
      return "the file system is read-only";
    case ENOSPC:
#if defined(EDQUOT)
    case EDQUOT:
#endif
    case EFBIG:
      return "disk full";
    case ENAMETOOLONG:
      return "the name is too long";
    case EMFILE:
    case ENFILE:
      return "too many open files";
    default:
      return "";
  }
}

/// The end of a path, whole characters of UTF-8.
std::string_view lastPart(std::string_view path, std::size_t room) {
  if (path.size() <= room) {
    return path;
  }
  path.remove_prefix(path.size() - room);
  while (!path.empty() && (static_cast<unsigned char>(path.front()) & 0xC0U) == 0x80U) {
    path.remove_prefix(1);
  }
  return path;
}

void describe(const FileError& file, QuorkitError& error) {
  constexpr std::size_t kRoomForCause = 64;
  ErrorText text;
  try {
    const std::string path = file.path().u8string();
    const bool isShort = path.size() <= text.room() - kRoomForCause;
    text << (isShort ? "" : "...") << lastPart(path, text.room() - kRoomForCause) << ": ";
  } catch (...) {  // out of memory: the cause alone
  }
  const std::string_view cause = causeOf(file.error());
  if (!cause.empty()) {
    text << cause;
  } else if (file.error() != 0) {
    text << "error " << std::int32_t(file.error()) << " of the operating system";
  } else {
    text << "cannot be read or written";
  }
  error.system = file.error();
  text.copyTo(error.text);
}

void describe(QuorkitStatus status, QuorkitError& error) {
  error = {status, 0, "", -1, 0, {}};
  (ErrorText() << quorkitStatusText(status)).copyTo(error.text);
}

}  // namespace

QuorkitStatus report(QuorkitError* errorOut) noexcept {
  QuorkitError unread{};
  QuorkitError& error = errorOut != nullptr ? *errorOut : unread;
  try {
    throw;
  } catch (const BadArgument& bad) {
    error = bad.error();
  } catch (const std::bad_alloc&) {
    describe(QUORKIT_OUT_OF_MEMORY, error);
  } catch (const std::length_error&) {
    describe(QUORKIT_TOO_LARGE, error);
  } catch (const Cancelled&) {
    describe(QUORKIT_CANCELLED, error);
  } catch (const FileError& file) {
    describe(QUORKIT_FILE, error);
    describe(file, error);
  } catch (const std::system_error& path) {
    describe(QUORKIT_FILE, error);
    error.system = path.code().value();
  } catch (...) {
    describe(QUORKIT_INTERNAL, error);
  }
  return error.status;
}

}  // namespace quorkit
