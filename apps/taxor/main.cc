// taxor: runs TAXOR commands on a DXF drawing from scripts, -c texts or standard input.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "base/utf.h"
#include "dxf/document.h"
#include "headless/headless_host.h"
#include "headless/input_stream.h"
#include "shell/about_command.h"
#include "shell/application.h"
#include "shell/command_table.h"
#include "shell/string_table.h"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitDrawing = 1;
constexpr int kExitUsage = 2;

std::string commandList() {
  std::string out = "Commands (typed at the \"Command: \" prompt, case-insensitive):\n";
  for (const shell::CommandSpec& command : shell::commandTable()) {
    std::string name = base::toUtf8(command.name);
    out += "  " + name + std::string(name.size() < 22 ? 22 - name.size() : 1, ' ') + command.help +
           "\n";
  }
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"TAXOR: classify the entities of a DXF drawing and keep their object data.",
               "taxor"};
  app.footer(commandList());
  std::string drawing_path, classes, output;
  std::vector<std::string> scripts, texts;
  bool save_in_place = false;
  bool quiet = false;
  app.set_version_flag("--version",
                       base::toUtf8(std::wstring(L"taxor ") + shell::productVersion()));
  app.add_option("--classes", classes, "load this class-definition file first (TAXOR_LOAD)")
      ->check(CLI::ExistingFile);
  auto* script_option = app.add_option("--script", scripts, "run the commands of this file")
                            ->check(CLI::ExistingFile)
                            ->take_all();
  auto* text_option =
      app.add_option("-c", texts, "run this command text (a newline is added)")->take_all();
  auto* out_option = app.add_option("-o,--output", output, "save the drawing to OUT at the end");
  auto* save_option =
      app.add_flag("--save", save_in_place, "save the drawing over DRAWING at the end");
  out_option->excludes(save_option);
  app.add_flag("--quiet", quiet, "print messages only, no prompts or echoed answers");
  app.add_option("DRAWING", drawing_path, "the DXF drawing to work on")->required();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    int code = app.exit(e);
    return code == 0 ? kExitOk : kExitUsage;
  }

  auto drawing = dxf::Document::load(drawing_path);
  if (!drawing) {
    std::cerr << "taxor: " << drawing.status().message() << "\n";
    return kExitDrawing;
  }

  // Scripts and -c texts run in the order they were given on the command line.
  headless::InputStream input;
  if (!classes.empty()) input.addText("TAXOR_LOAD\n" + classes + "\n");
  size_t next_script = 0, next_text = 0;
  for (CLI::Option* option : app.parse_order()) {
    if (option == script_option) {
      input.addSource(std::make_unique<std::ifstream>(scripts[next_script++], std::ios::binary));
    } else if (option == text_option) {
      std::string text = texts[next_text++];
      if (text.empty() || text.back() != '\n') text += '\n';
      input.addText(text);
    }
  }
  bool from_stdin = scripts.empty() && texts.empty();
  bool interactive = from_stdin && isatty(STDIN_FILENO);
  if (from_stdin) {
    // The stream is owned by the process; the input only borrows it.
    input.addSource(std::unique_ptr<std::istream>(new std::istream(std::cin.rdbuf())));
  }

  headless::HeadlessHost host(*drawing, base::fromUtf8(drawing_path), input, std::cout, std::cerr,
                              !interactive, quiet);
  shell::Application application(host, shell::StringTable::builtIn());
  if (base::Status status = application.initialize(); !status) {
    std::cerr << "taxor: " << status.message() << "\n";
    return kExitDrawing;
  }
  host.run();
  application.unload();

  std::string target = save_in_place ? drawing_path : output;
  if (!target.empty()) {
    if (base::Status status = drawing->save(target); !status) {
      std::cerr << "taxor: " << status.message() << "\n";
      return kExitDrawing;
    }
  }
  return kExitOk;
}
