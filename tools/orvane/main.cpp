// orvane: command-line tool of the Orvane kernel.
//   orvane check LAYOUT.json [--svg OUT.svg] [--json] [--tol T] [--max-overlap R]
//                [--max-protrusion R] [--solution K]
// Exit code 0 when every checked layout is clean, 1 when anything overlaps, lies inside
// another part or sticks out, 2 on bad input.

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Check.h"
#include "Layout.h"
#include "Report.h"
#include "orvane/foundation/Exception.h"

using namespace orvane;
using namespace orvane::tool;

namespace {

constexpr const char* Usage =
    "usage: orvane check LAYOUT.json [--svg OUT.svg] [--json] [--tol T] [--max-overlap R]\n"
    "                    [--max-protrusion R] [--solution K]\n";

struct TArgs {
  std::string Layout;
  std::string Svg;
  bool Json = false;
  int Solution = -1;
  TCheckOptions Options;
};

class EUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

double PositiveNumber(const std::string& Flag, const char* Text) {
  char* end = nullptr;
  const double v = std::strtod(Text, &end);
  if (end == Text || *end != '\0' || !std::isfinite(v) || v <= 0.0) {
    throw EUsage(Flag + " needs a positive number, not '" + Text + "'");
  }
  return v;
}

TArgs ParseArgs(int argc, char** argv) {
  if (argc < 2 || std::string(argv[1]) != "check") throw EUsage("the only command is 'check'");
  TArgs args;
  for (int k = 2; k < argc; ++k) {
    const std::string a = argv[k];
    auto value = [&]() -> const char* {
      if (k + 1 >= argc) throw EUsage(a + " needs a value");
      return argv[++k];
    };
    if (a == "--json")
      args.Json = true;
    else if (a == "--svg")
      args.Svg = value();
    else if (a == "--tol")
      args.Options.Tol = PositiveNumber(a, value());
    else if (a == "--max-overlap")
      args.Options.MaxOverlap = PositiveNumber(a, value());
    else if (a == "--max-protrusion")
      args.Options.MaxProtrusion = PositiveNumber(a, value());
    else if (a == "--solution") {
      const double v = PositiveNumber(a, value());
      if (v != std::floor(v) || v > 1e6) throw EUsage("--solution needs a whole number from 1");
      args.Solution = static_cast<int>(v);
    } else if (!a.empty() && a[0] == '-')
      throw EUsage("unknown option " + a);
    else if (args.Layout.empty())
      args.Layout = a;
    else
      throw EUsage("more than one layout file given");
  }
  if (args.Layout.empty()) throw EUsage("no layout file given");
  return args;
}

// Progress on standard error for checks that run longer than a second, on terminals only.
class TProgressLine {
 public:
  explicit TProgressLine(bool Enabled) : FEnabled(Enabled && isatty(STDERR_FILENO)), FStart(Clock::now()) {}
  ~TProgressLine() {
    if (FShown) std::fprintf(stderr, "\r%60s\r", "");
  }
  void operator()(const char* Phase, double Done) {
    if (!FEnabled) return;
    const double elapsed = std::chrono::duration<double>(Clock::now() - FStart).count();
    if (elapsed < 1.0) return;
    FShown = true;
    std::fprintf(stderr, "\rchecking: %s %3.0f%% (%.1f s)   ", Phase, Done * 100.0, elapsed);
    std::fflush(stderr);
  }

 private:
  using Clock = std::chrono::steady_clock;
  bool FEnabled;
  bool FShown = false;
  Clock::time_point FStart;
};

}  // namespace

int main(int argc, char** argv) {
  TArgs args;
  try {
    args = ParseArgs(argc, argv);
  } catch (const EUsage& e) {
    std::cerr << "orvane: " << e.what() << "\n" << Usage;
    return 2;
  }

  std::vector<TLayout> layouts;
  const auto parseStart = std::chrono::steady_clock::now();
  try {
    layouts = ReadLayoutFile(args.Layout);
    if (args.Solution >= 0) {
      // --solution counts from 1, as a person reads the list of solutions.
      if (args.Solution > static_cast<int>(layouts.size())) {
        throw ELayoutError(Format("has %d solution(s); --solution %d is out of range", static_cast<int>(layouts.size()),
                                  args.Solution));
      }
      layouts = {layouts[static_cast<std::size_t>(args.Solution - 1)]};
    }
  } catch (const ELayoutError& e) {
    std::cerr << "orvane: " << args.Layout << ": " << e.what() << "\n";
    return 2;
  }
  const double parseSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - parseStart).count();

  bool clean = true;
  nlohmann::json all = nlohmann::json::array();
  try {
    TProgressLine progress(!args.Json);
    for (std::size_t k = 0; k < layouts.size(); ++k) {
      const TCheckReport report = CheckLayout(layouts[k], args.Options, std::ref(progress));
      clean = clean && report.Clean;
      if (args.Json) {
        all.push_back(ReportToJson(report, parseSeconds));
      } else {
        if (k) std::cout << "\n";
        WriteTextReport(std::cout, report, args.Options, parseSeconds);
      }
      if (!args.Svg.empty()) {
        std::string path = args.Svg;
        if (layouts.size() > 1) {
          const std::size_t dot = path.rfind('.');
          const std::string suffix = Format("-%d", static_cast<int>(k + 1));
          path = dot == std::string::npos ? path + suffix : path.substr(0, dot) + suffix + path.substr(dot);
        }
        std::ofstream svg(path);
        WriteSvg(svg, layouts[k], report);
        svg.flush();
        if (!svg) {
          std::cerr << "orvane: " << path << ": cannot write the picture\n";
          return 2;
        }
        if (!args.Json) std::cout << "picture: " << path << "\n";
      }
    }
  } catch (const Exception& e) {
    // A ring the kernel refuses (a self-crossing part its monotone walk cannot hold, ...).
    std::cerr << "orvane: " << args.Layout << ": " << e.what() << "\n";
    return 2;
  }
  if (args.Json) std::cout << (all.size() == 1 ? all[0] : all).dump(2) << "\n";
  return clean ? 0 : 1;
}
