// Writing a field beside a plain program with streams, and beside the system's calls alone. Prints
// a Markdown table.

#include "side_by_side.h"
#include "soups/tagged_mesh.h"

#include <quor.h>

#include <CLI/CLI.hpp>

#include <fcntl.h>
#include <unistd.h>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

using namespace bench;

/// What anybody would write: a stream, and a flush at the end of each line.
void writePlainly(const TaggedMesh& mesh, const std::vector<double>& field,
                  const std::string& name) {
  std::ofstream file(name, std::ios::binary);
  file << "mtllib plain.mtl" << std::endl << "usemtl Heat" << std::endl;
  for (std::size_t i = 0; i < mesh.vertices.size(); i += 3) {
    file << "v " << mesh.vertices[i] << " " << mesh.vertices[i + 1] << " " << mesh.vertices[i + 2]
         << std::endl;
  }
  for (const double value : field) {
    file << "vt " << value << " 0.5" << std::endl;
  }
  for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
    file << "f";
    for (std::size_t k = t; k < t + 3; ++k) {
      file << " " << mesh.triangles[k] + 1 << "/" << mesh.triangles[k] + 1;
    }
    file << std::endl;
  }
}

/// One call of the system per line of a text: no method that writes whole lines can be faster.
void writeLines(const std::string& text, const std::string& name) {
  const int file = open(name.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin) + 1;
    if (write(file, text.data() + begin, end - begin) < 0) {
      throw std::runtime_error("cannot write " + name);
    }
    begin = end;
  }
  close(file);
}

std::string readText(const std::string& name) {
  std::ostringstream text;
  text << std::ifstream(name, std::ios::binary).rdbuf();
  return text.str();
}

void measure(const TaggedMesh& mesh, int rounds) {
  void* handle = nullptr;
  StatusCode status = 0;
  quorctorTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), mesh.tags.data(),
                 nullptr, &status, &handle);
  const std::vector<double> values(mesh.tags.begin(), mesh.tags.end());
  std::vector<double> field(values.size());
  quorsolveTagged(handle, values.data(), field.data(), &status);
  const auto directory = std::filesystem::temp_directory_path() / "quor_write_bench";
  std::filesystem::create_directories(directory);
  const std::string base = (directory / "field").string();
  wobj(handle, field.data(), base.c_str());
  const std::string text = readText(base + ".obj");
  const std::string other = (directory / "other.obj").string();
  const std::vector<double> t = sideBySide(
      rounds, {[&] { wobj(handle, field.data(), base.c_str()); },
               [&] { writePlainly(mesh, field, other); }, [&] { writeLines(text, other); }});
  std::printf("| %s | %.3f | %.3f (%.2fx) | %.3f (%.2fx) |\n", mesh.label().c_str(), t[0], t[1],
              t[1] / t[0], t[2], t[2] / t[0]);
  quorfree(handle);
  std::filesystem::remove_all(directory);
}

int runCommand(int argc, char** argv) {
  std::string part;
  std::string dragon;
  int rounds = 5;
  CLI::App app("Measures writing beside its peers.", "write_bench");
  app.add_option("--part", part, "a CAD part")->required();
  app.add_option("--dragon", dragon, "a scanned mesh")->required();
  app.add_option("--rounds", rounds, "measurements of each")->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  std::printf(
      "\n### Write\n\nSeconds, into the directory for temporary files; in brackets how many times "
      "wobj's. The plain program inserts the same lines into a stream and flushes each. The last "
      "column is one call of the system per line of the finished text.\n\n"
      "| Mesh | wobj | plain stream | one call a line |\n|---|---|---|---|\n");
  measure(tagEnds("CAD part", readSoup(part), 2), rounds);
  measure(tagEnds("dragon", readSoup(dragon), 1), rounds);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runCommand(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "write_bench: %s\n", error.what());
  }
  return 1;
}
