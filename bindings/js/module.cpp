// What the WebAssembly module exports besides the kit: progress as an import, and OBJ as text.
#include "quorkit.h"

#include "kit/exception_guard.h"
#include "kit/obj_text.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

extern "C" {

/// Implemented by the page. It must not throw: an exception cannot cross the frames of the module.
/// @return 0 to go on
__attribute__((import_module("env"), import_name("quorProgress"))) std::int32_t quorProgress(
    double fraction, void* context);

/// The address of the imported function, to be handed to the functions that report progress.
QuorkitProgress quorjsProgress() {
  return quorProgress;
}

/// Composes the text of an OBJ file as quorkitWrite does, without a file system.
/// @param name     of the material file, as it is to stand in the text
/// @param textOut  receives the text, to be released with free
/// @param sizeOut  receives the number of bytes
QuorkitStatus quorjsObjText(std::int32_t n, const double* vertices, std::int32_t m,
                            const std::int32_t* triangles, const double* field, const char* name,
                            double margin, char** textOut, std::uint32_t* sizeOut) {
  return quorkit::guarded(nullptr, [&] {
    std::string text;
    quorkit::composeObj({n, vertices, m, triangles}, field, name, margin,
                        [&text](std::string_view block) { text += block; });
    char* const copy = static_cast<char*>(std::malloc(text.size()));
    if (copy == nullptr) {
      throw std::bad_alloc();
    }
    std::copy(text.begin(), text.end(), copy);
    *textOut = copy;
    *sizeOut = static_cast<std::uint32_t>(text.size());
  });
}

}  // extern "C"
