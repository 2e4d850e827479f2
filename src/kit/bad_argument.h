// What a call reports to its caller: an argument that it refuses, and the text of it.
#pragma once

#include "export/number_text.h"
#include "quorkit.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string_view>

namespace quorkit {

/// One line of text that is composed without memory. What has no room is dropped.
class ErrorText {
 public:
  ErrorText& operator<<(std::string_view text) {
    const std::size_t length = std::min(text.size(), room());
    std::copy_n(text.data(), length, text_.data() + length_);
    length_ += length;
    return *this;
  }
  ErrorText& operator<<(std::int32_t number) {
    std::array<char, 12> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return *this << view(digits.data(), end);
  }
  ErrorText& operator<<(double number) {
    std::array<char, quor::kLongestNumber> digits{};
    return *this << view(digits.data(), quor::writeNumber(digits.data(), number));
  }

  std::size_t room() const { return text_.size() - 1 - length_; }
  /// @param text  that of a QuorkitError
  void copyTo(char* text) const { std::copy_n(text_.data(), text_.size(), text); }

 private:
  static std::string_view view(const char* first, const char* end) {
    return {first, static_cast<std::size_t>(end - first)};
  }

  std::array<char, sizeof(QuorkitError::text)> text_{};
  std::size_t length_ = 0;
};

/// An argument is not what the function asks for.
class BadArgument : public std::exception {
 public:
  /// @param reason    QUORKIT_NULL or one of the constants that follow it
  /// @param argument  its name in quorkit.h
  /// @param index     of the entry, or -1
  BadArgument(std::int32_t reason, const char* argument, std::int32_t index, const ErrorText& text)
      : error_{QUORKIT_BAD_ARGUMENT, reason, argument, index, 0, {}} {
    text.copyTo(error_.text);
  }

  const char* what() const noexcept override { return error_.text; }
  const QuorkitError& error() const { return error_; }

 private:
  QuorkitError error_;
};

}  // namespace quorkit
