// classification_bench: times the classifying commands on a generated drawing through the
// headless command line, against the time it takes to load that drawing.
//   classification_bench [ENTITIES] [RUNS] [REPEAT_STEP]     (defaults 100000, 3, none)
// Each run loads the drawing afresh, loads a generated class file of 50 classes and runs,
// in this order: TAXOR_STAT before anything is classified, TAXOR_CLASSIFY_AUTO mode 0 (records
// attached to every entity), TAXOR_CLASSIFY_AUTO mode 1 (properties applied from the records),
// TAXOR_ASSERT, TAXOR_STAT, the selection commands, the duplicate commands, TAXOR_ROUND,
// TAXOR_SORT, TAXOR_REMOVE_ALL and TAXOR_TEMPLATE (a class file written from the drawing), each
// over every entity. The steps after the classifying ones run twice: on the drawing as
// classified in the session, and on the classified drawing saved and loaded again, whose
// records are then file text, as they are when a classified drawing is opened. The load of
// that drawing is timed too: it is the load of the drawing those commands work on.
// The fastest run of each step is printed, with its ratio to the load times. With
// REPEAT_STEP (an index into the steps) that step runs ten times more per run, in the
// session, so that a profiler sees mostly it.

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "drawing_generator.h"
#include "dxf/document.h"
#include "session/session.h"

namespace {

// Processor time of this process: the machine may be busy with other work, and the steps
// are single-threaded.
double cpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

constexpr const char* kTypes[] = {"Line", "Polyline", "Circle",        "Arc",
                                  "Text", "Point",    "BlockReference"};
constexpr int kTypeCount = 7;
constexpr int kClasses = 50;
constexpr int kTables = 10;
// The generator's layers, "0" aside.
constexpr const char* kLayers[] = {
    "WALLS",   "DOORS",     "WINDOWS", "FURNITURE",  "ELECTRICAL", "LIGHTING",  "PLUMBING",
    "HVAC",    "STRUCTURE", "GRID",    "DIMENSIONS", "TEXT",       "HATCH",     "ROADS",
    "PARCELS", "CONTOURS",  "TREES",   "UTILITIES",  "SURVEY",     "ANNOTATION"};

// The first seven classes take every entity of their type; the others only those on one
// layer, with a greater draw order, so that properties decide between several candidates.
std::string generateClassFile() {
  std::string out = "class\tGenerated\t1\n";
  for (int i = 0; i < kClasses; ++i) {
    std::string n = std::to_string(i);
    out += "obj_name\tClass " + n + "\t1\t" + n + "\n";
    out += std::string("obj_type\t") + kTypes[i % kTypeCount] + "\n";
    if (i >= kTypeCount) out += std::string("obj_prop\tlayer\t") + kLayers[i % 20] + "\n";
    out += "obj_prop\tlinetypescale\t1\t0.5:2\n";
    out += "vel_name\tTABLE_" + std::to_string(i % kTables) + "\n";
    out += "vel_key\tCLASS\n";
    out += "vel_fld\tDN\tNominal diameter\trequired integer\t100\t80,100,150\n";
    out += "vel_fld\tMATERIAL\tMaterial\tnotempty character\tPE\tPE,PVC,Steel\n";
    out += "vel_fld\tDEPTH\tDepth\treal\t1.2\t0.5:4\n";
    out += "vel_fld\tLAID\tYear laid\tinteger\t1990\t1900:2100\n";
    out += "vel_fld\tNOTE\tRemark\tcharacter\n";
    out += "vel_fld\tSURVEYED\tSurveyed on\tcharacter\t$(day).$(month).$(year)\n";
  }
  out += "/class\n";
  return out;
}

double secondsSince(double start) { return cpuSeconds() - start; }

struct Step {
  const char* name;
  std::string script;
};

}  // namespace

int main(int argc, char** argv) {
  int64_t entities = argc > 1 ? std::atoll(argv[1]) : 100000;
  int runs = argc > 2 ? std::atoi(argv[2]) : 3;
  size_t repeat_step = argc > 3 ? static_cast<size_t>(std::atoi(argv[3])) : SIZE_MAX;
  if (entities <= 0 || runs <= 0) {
    std::fprintf(stderr, "usage: classification_bench [ENTITIES] [RUNS] [REPEAT_STEP]\n");
    return 2;
  }
  const std::string drawing_text = bench::generateDrawing({.entities = entities});
  std::filesystem::path class_file = std::filesystem::temp_directory_path() /
                                     ("classification_bench_" + std::to_string(getpid()) + ".txt");
  std::ofstream(class_file) << generateClassFile();
  std::filesystem::path template_file = class_file;
  template_file.replace_extension(".template.txt");

  const std::vector<Step> steps = {
      {"TAXOR_LOAD (class file)", "TAXOR_LOAD\n" + class_file.string() + "\n"},
      // Selecting and pruning every entity, and finding no records: the floor of each step.
      {"TAXOR_STAT, no records yet", "TAXOR_STAT\nALL\n\n"},
      {"TAXOR_CLASSIFY_AUTO mode 0", "TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n"},
      {"TAXOR_CLASSIFY_AUTO mode 1", "AI_DESELECT\nTAXOR_CLASSIFY_AUTO\n1\n0\nALL\n\n"},
      {"TAXOR_ASSERT", "AI_DESELECT\nTAXOR_ASSERT\n1\nALL\n\n"},
      {"TAXOR_STAT", "AI_DESELECT\nTAXOR_STAT\nALL\n\n"},
      {"TAXOR_SEL (a class)", "AI_DESELECT\nTAXOR_SEL\nClass 3\n"},
      {"TAXOR_SEL_CLASS (the group)", "AI_DESELECT\nTAXOR_SEL_CLASS\nGenerated\n"},
      {"TAXOR_SEL_EXT 1 1 1", "AI_DESELECT\nTAXOR_SEL_EXT\nClass 3\n1\n1\n1\nALL\n\n"},
      {"TAXOR_SEL_ALL 1 1 1", "AI_DESELECT\nTAXOR_SEL_ALL\n1\n1\n1\nALL\n\n"},
      {"TAXOR_SEL_CLASSIFIED", "AI_DESELECT\nTAXOR_SEL_CLASSIFIED\n1\nALL\n\n"},
      {"TAXOR_SEL_NULL", "AI_DESELECT\nTAXOR_SEL_NULL\n1\nALL\n\n"},
      {"TAXOR_SEL_DUPLICATES", "AI_DESELECT\nTAXOR_SEL_DUPLICATES\nALL\n\n"},
      {"TAXOR_DEL_DUPLICATES", "AI_DESELECT\nTAXOR_DEL_DUPLICATES\nALL\n\nFirst\n"},
      {"TAXOR_ROUND", "AI_DESELECT\nTAXOR_ROUND\nALL\n\n"},
      {"TAXOR_SORT", "AI_DESELECT\nTAXOR_SORT\nALL\n\n"},
      {"TAXOR_REMOVE_ALL", "AI_DESELECT\nTAXOR_REMOVE_ALL\nALL\n\n"},
      {"TAXOR_TEMPLATE", "AI_DESELECT\nTAXOR_TEMPLATE\nALL\n\n\n" + template_file.string() + "\n"},
  };
  // The steps that classify, run on the generated drawing only.
  constexpr size_t kClassifyingSteps = 4;
  double best_load = 1e300;
  double best_load_classified = 1e300;
  std::vector<double> best(steps.size(), 1e300);
  std::vector<double> best_reloaded(steps.size(), 1e300);
  std::string last_out;
  size_t classified_size = 0;
  auto openSession = [](dxf::Document drawing, std::ostringstream& out, std::ostringstream& err) {
    return session::Session::open(std::move(drawing), L"generated.dxf", out, err,
                                  {.echo = false, .quiet = true, .wrap = {}});
  };
  for (int run = 0; run < runs; ++run) {
    double start = cpuSeconds();
    auto drawing = dxf::Document::parse(drawing_text, "generated.dxf");
    if (!drawing) {
      std::fprintf(stderr, "%s\n", drawing.status().message().c_str());
      return 1;
    }
    best_load = std::min(best_load, secondsSince(start));

    std::ostringstream out, err;
    auto opened = openSession(std::move(drawing.value()), out, err);
    if (!opened) return 1;
    session::Session& session = **opened;
    std::string classified_text;
    for (size_t i = 0; i < steps.size(); ++i) {
      if (i == kClassifyingSteps) {
        classified_text = session.drawing().serialize();
        classified_size = classified_text.size();
      }
      session.input().addText(steps[i].script);
      start = cpuSeconds();
      session.run();
      best[i] = std::min(best[i], secondsSince(start));
      for (int again = 0; i == repeat_step && again < 10; ++again) {
        session.input().addText(steps[i].script);
        session.run();
      }
    }
    last_out = out.str();

    start = cpuSeconds();
    auto classified = dxf::Document::parse(classified_text, "classified.dxf");
    if (!classified) {
      std::fprintf(stderr, "%s\n", classified.status().message().c_str());
      return 1;
    }
    best_load_classified = std::min(best_load_classified, secondsSince(start));
    std::ostringstream reloaded_out;
    auto reopened = openSession(std::move(classified.value()), reloaded_out, err);
    if (!reopened) return 1;
    session::Session& reloaded = **reopened;
    reloaded.input().addText(steps[0].script);
    reloaded.run();
    for (size_t i = kClassifyingSteps; i < steps.size(); ++i) {
      reloaded.input().addText(steps[i].script);
      start = cpuSeconds();
      reloaded.run();
      best_reloaded[i] = std::min(best_reloaded[i], secondsSince(start));
    }
    if (!err.str().empty()) {
      std::fprintf(stderr, "errors:\n%s", err.str().c_str());
      return 1;
    }
  }
  std::filesystem::remove(class_file);
  std::filesystem::remove(template_file);

  std::printf("entities=%lld classes=%d runs=%d (fastest run of each step)\n",
              static_cast<long long>(entities), kClasses, runs);
  std::printf("load of the generated drawing %.3f s, of the classified one %.3f s (%.1f MB)\n\n",
              best_load, best_load_classified, static_cast<double>(classified_size) / 1e6);
  std::printf("%-30s %9s %9s %11s %9s\n", "step", "CPU s", "x load", "reloaded s",
              "x load");
  std::printf("%-30s %9.3f %9.2f\n", "load drawing", best_load, 1.0);
  for (size_t i = 0; i < steps.size(); ++i) {
    std::printf("%-30s %9.3f %9.2f", steps[i].name, best[i], best[i] / best_load);
    if (i >= kClassifyingSteps) {
      std::printf(" %11.3f %9.2f", best_reloaded[i], best_reloaded[i] / best_load_classified);
    }
    std::printf("\n");
  }
  std::printf("\n(CPU s, x load: in the session, against the load of the generated drawing;\n"
              " reloaded s, x load: on the classified drawing loaded from its saved text,\n"
              " against its load)\n");
  std::printf("\nwhat the commands printed in the last run:\n%s\n", last_out.c_str());
  return 0;
}
