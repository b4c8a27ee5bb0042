// taxor: runs TAXOR commands on a DXF drawing from scripts, -c texts or standard input.
//   taxor run DRAWING [options], or in short taxor DRAWING [options]
#include <unistd.h>
#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "base/utf.h"
#include "dxf/document.h"
#include "session/session.h"
#include "shell/about_command.h"
#include "shell/command_table.h"

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

// Without a subcommand the arguments are those of `run`: the program's first form stays.
std::vector<std::string> withSubcommand(int argc, char** argv, const CLI::App& app) {
  std::vector<std::string> args(argv + 1, argv + argc);
  auto named = [&](const CLI::App* subcommand) { return subcommand->get_name() == args[0]; };
  bool top_level = !args.empty() && (args[0] == "-h" || args[0] == "--help" ||
                                     args[0] == "--version" || !app.get_subcommands(named).empty());
  if (!top_level) args.insert(args.begin(), "run");
  // CLI11 takes the arguments last first.
  std::reverse(args.begin(), args.end());
  return args;
}

}  // namespace

int main(int argc, char** argv) {
#if defined(__GLIBC__)
  // A drawing's large buffers (the file, its records, the text store's megabyte chunks) are
  // each mapped on their own and given back whole when freed. glibc would otherwise raise
  // this bound whenever a larger mapped buffer is freed (loading a million entities frees a
  // 16 MB list of handles), and blocks below it then come from the heap, where freed ones
  // may stay resident: 8 MB at the peak of classifying a million entities.
  mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
  CLI::App app{"TAXOR: classify the entities of a DXF drawing and keep their object data.",
               "taxor"};
  app.footer(commandList());
  app.require_subcommand(1);
  app.set_version_flag("--version",
                       base::toUtf8(std::wstring(L"taxor ") + shell::productVersion()));
  CLI::App* run = app.add_subcommand(
      "run", "run commands on a drawing; `taxor DRAWING ...` is short for `taxor run DRAWING ...`");
  run->footer(commandList());
  std::string drawing_path, classes, output;
  std::vector<std::string> scripts, texts;
  bool save_in_place = false;
  bool quiet = false;
  run->add_option("--classes", classes, "load this class-definition file first (TAXOR_LOAD)")
      ->check(CLI::ExistingFile);
  auto* script_option = run->add_option("--script", scripts, "run the commands of this file")
                            ->check(CLI::ExistingFile)
                            ->take_all();
  auto* text_option =
      run->add_option("-c", texts, "run this command text (a newline is added)")->take_all();
  auto* out_option = run->add_option("-o,--output", output, "save the drawing to OUT at the end");
  auto* save_option =
      run->add_flag("--save", save_in_place, "save the drawing over DRAWING at the end");
  out_option->excludes(save_option);
  run->add_flag("--quiet", quiet, "print messages only, no prompts or echoed answers");
  run->add_option("DRAWING", drawing_path, "the DXF drawing to work on")->required();
  try {
    std::vector<std::string> args = withSubcommand(argc, argv, app);
    app.parse(args);
  } catch (const CLI::ParseError& e) {
    int code = app.exit(e);
    return code == 0 ? kExitOk : kExitUsage;
  }

  auto drawing = dxf::Document::load(drawing_path);
  if (!drawing) {
    std::cerr << "taxor: " << drawing.status().message() << "\n";
    return kExitDrawing;
  }
  bool from_stdin = scripts.empty() && texts.empty();
  bool interactive = from_stdin && isatty(STDIN_FILENO);
  auto opened =
      session::Session::open(std::move(drawing.value()), base::fromUtf8(drawing_path), std::cout,
                             std::cerr, {.echo = !interactive, .quiet = quiet, .wrap = {}});
  if (!opened) {
    std::cerr << "taxor: " << opened.status().message() << "\n";
    return kExitDrawing;
  }
  session::Session& session = **opened;

  // Scripts and -c texts run in the order they were given on the command line.
  headless::InputStream& input = session.input();
  if (!classes.empty()) input.addText("TAXOR_LOAD\n" + classes + "\n");
  size_t next_script = 0, next_text = 0;
  for (CLI::Option* option : run->parse_order()) {
    if (option == script_option) {
      input.addSource(std::make_unique<std::ifstream>(scripts[next_script++], std::ios::binary));
    } else if (option == text_option) {
      std::string text = texts[next_text++];
      if (text.empty() || text.back() != '\n') text += '\n';
      input.addText(text);
    }
  }
  if (from_stdin) {
    // The stream is owned by the process; the input only borrows it.
    input.addSource(std::unique_ptr<std::istream>(new std::istream(std::cin.rdbuf())));
  }

  session.run();
  session.unload();

  std::string target = save_in_place ? drawing_path : output;
  if (!target.empty()) {
    if (base::Status status = session.drawing().save(target); !status) {
      std::cerr << "taxor: " << status.message() << "\n";
      return kExitDrawing;
    }
  }
  return kExitOk;
}
