// dxf_generate: writes the synthetic benchmark drawing to a file.
//   dxf_generate N OUTPUT.dxf [--with-xrecords]

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "drawing_generator.h"

int main(int argc, char** argv) {
  bench::DrawingOptions options;
  const char* output = nullptr;
  bool have_count = false;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--with-xrecords") {
      options.with_xrecords = true;
    } else if (!have_count) {
      char* end = nullptr;
      options.entities = std::strtoll(arg.c_str(), &end, 10);
      if (*end != '\0' || options.entities < 0) {
        std::fprintf(stderr, "dxf_generate: bad entity count '%s'\n", arg.c_str());
        return 2;
      }
      have_count = true;
    } else if (output == nullptr) {
      output = argv[i];
    } else {
      output = nullptr;
      break;
    }
  }
  if (!have_count || output == nullptr) {
    std::fprintf(stderr, "usage: dxf_generate N OUTPUT.dxf [--with-xrecords]\n");
    return 2;
  }

  std::FILE* file = std::fopen(output, "wb");
  if (file == nullptr) {
    std::fprintf(stderr, "dxf_generate: cannot write %s: %s\n", output, std::strerror(errno));
    return 1;
  }
  bool ok = true;
  bench::generateDrawing(options, [&](std::string_view chunk) {
    ok = ok && std::fwrite(chunk.data(), 1, chunk.size(), file) == chunk.size();
  });
  ok = std::fclose(file) == 0 && ok;
  if (!ok) {
    std::fprintf(stderr, "dxf_generate: writing %s failed\n", output);
    return 1;
  }
  return 0;
}
