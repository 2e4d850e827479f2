// A locale of C whose numbers look different, for as long as this lives.
#pragma once

#include "support/temp_directory.h"

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>

namespace test {

class NumericLocale {
 public:
  /// @param decimalPoint  as localedef reads it: a character or <UXXXX>
  explicit NumericLocale(const std::string& decimalPoint) {
    std::ofstream(directory_ / "source")
        << "LC_NUMERIC\ndecimal_point \"" << decimalPoint
        << "\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n";
    const std::string command = "localedef -c -f UTF-8 -i " + (directory_ / "source") + " " +
                                (directory_ / "made.UTF-8") + " >/dev/null 2>&1";
    static_cast<void>(std::system(command.c_str()));  // fails: all other categories are missing
    setenv("LOCPATH", (directory_ / "").c_str(), 1);
    std::setlocale(LC_NUMERIC, "made.UTF-8");
  }
  ~NumericLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
  }
  NumericLocale(const NumericLocale&) = delete;
  NumericLocale& operator=(const NumericLocale&) = delete;

  /// "." if the system could not make the locale.
  static std::string decimalPoint() { return std::localeconv()->decimal_point; }

 private:
  TempDirectory directory_;
};

}  // namespace test
