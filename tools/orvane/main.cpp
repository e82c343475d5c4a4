// orvane: command-line tool of the Orvane kernel. `orvane --help` lists the commands.
// check: exit code 0 when every checked layout is clean, 1 when anything overlaps, lies inside
// another part or sticks out, 2 on bad input. profile: 0 when every contour closes and every
// conversion held its tolerance, 1 otherwise, 2 on bad input.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Check.h"
#include "DxfDrawing.h"
#include "Layout.h"
#include "Profile.h"
#include "Report.h"
#include "orvane/Version.h"
#include "orvane/foundation/Exception.h"

using namespace orvane;
using namespace orvane::tool;

namespace {

constexpr const char* Usage =
    "usage: orvane COMMAND [ARGS]\n"
    "\n"
    "commands:\n"
    "  check LAYOUT.json   check a nesting layout for contacts, overlaps, parts inside\n"
    "                      others and parts outside the container\n"
    "  profile DRAWING.dxf join a drawing's curves into closed profiles, tell parts from\n"
    "                      holes, find the gaps, and turn splines into lines and arcs\n"
    "  help [COMMAND]      show this text, or the usage of COMMAND\n"
    "\n"
    "options:\n"
    "  -h, --help          show this text\n"
    "  --version           show the version\n";

constexpr const char* CheckUsage =
    "usage: orvane check LAYOUT.json [--svg OUT.svg] [--json] [--tol T] [--max-overlap R]\n"
    "                    [--max-protrusion R] [--solution K]\n"
    "\n"
    "Checks every solution of a layout file (the tool's own {\"container\", \"parts\"} form or a\n"
    "nesting benchmark's placed solutions) and prints a report. In the tool's own form a part's\n"
    "vertex may be [x, y, bulge]: the segment that starts there is then an arc, with the bulge\n"
    "of DXF (the tangent of a quarter of its sweep, positive counter-clockwise).\n"
    "\n"
    "  --tol T             parts whose boundaries come within distance T touch (default 1e-6)\n"
    "  --max-overlap R     allowed common area, relative to the smaller part (default 1e-5)\n"
    "  --max-protrusion R  allowed protrusion out of the container, relative to its height\n"
    "                      (default 1e-4)\n"
    "  --solution K        check only the K-th solution of the file, counted from 1\n"
    "  --json              print the report as JSON\n"
    "  --svg OUT.svg       draw the layout with contacts and overlaps marked\n"
    "  -h, --help          show this text\n"
    "\n"
    "exit status: 0 clean, 1 not clean, 2 bad input or usage\n";

constexpr const char* ProfileUsage =
    "usage: orvane profile DRAWING.dxf [--join-tol T] [--arc-tol T] [--dxf OUT.dxf] [--svg OUT.svg]\n"
    "                      [--json] [--layer NAME]...\n"
    "\n"
    "Reads the model space of a DXF drawing, joins its curves end to end into contours, nests\n"
    "the closed ones into parts and holes, and prints a report: parts with net area, outline\n"
    "length, holes, box and segments by kind; open contours with their gaps; splines\n"
    "recognised as lines and arcs.\n"
    "\n"
    "  --join-tol T        ends closer than T meet (default 1e-6 of the drawing's diagonal)\n"
    "  --arc-tol T         turn every spline and Bezier into lines and arcs within distance T\n"
    "  --dxf OUT.dxf       write the closed profiles as closed LWPOLYLINEs with bulges,\n"
    "                      outlines on layer PARTS and holes on layer HOLES\n"
    "  --svg OUT.svg       draw parts, holes, open contours and gaps\n"
    "  --layer NAME        read only this layer (may be repeated)\n"
    "  --json              print the report as JSON\n"
    "  -h, --help          show this text\n"
    "\n"
    "exit status: 0 every contour closed and every conversion within its tolerance,\n"
    "1 open contours remain (or a conversion strayed), 2 bad input or usage\n";

struct TProfileArgs {
  std::string Drawing;
  std::string Dxf, Svg;
  bool Json = false;
  std::vector<std::string> Layers;
  TProfileOptions Options;
};

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

// A request for text rather than a check: the help texts and the version, to standard
// output. Empty when the arguments ask for a check.
std::string InfoRequest(int argc, char** argv) {
  if (argc < 2) return {};
  const std::string first = argv[1];
  if (first == "-h" || first == "--help") return Usage;
  if (first == "--version") return std::string("orvane ") + VersionString() + "\n";
  if (first == "help") {
    if (argc == 2) return Usage;
    if (std::string(argv[2]) == "check") return CheckUsage;
    if (std::string(argv[2]) == "profile") return ProfileUsage;
    throw EUsage(std::string("no help on '") + argv[2] + "': the commands are check, profile and help");
  }
  if (first == "profile") {
    for (int k = 2; k < argc; ++k) {
      const std::string a = argv[k];
      if (a == "-h" || a == "--help") return ProfileUsage;
    }
  }
  if (first == "check") {
    for (int k = 2; k < argc; ++k) {
      const std::string a = argv[k];
      if (a == "-h" || a == "--help") return CheckUsage;
    }
  }
  return {};
}

// Walks the arguments after the command: Take(A, Value) handles option A, calling Value()
// for the option's value, and answers false for an option it does not know; anything else is
// handed to File(A), the input file.
template <class F, class G>
void WalkArgs(int argc, char** argv, F Take, G File) {
  for (int k = 2; k < argc; ++k) {
    const std::string a = argv[k];
    auto value = [&]() -> const char* {
      if (k + 1 >= argc) throw EUsage(a + " needs a value");
      return argv[++k];
    };
    if (!a.empty() && a[0] == '-') {
      if (!Take(a, value)) throw EUsage("unknown option " + a);
    } else {
      File(a);
    }
  }
}

TArgs ParseArgs(int argc, char** argv) {
  if (argc < 2) throw EUsage("no command given");
  if (std::string(argv[1]) != "check") throw EUsage(std::string("unknown command '") + argv[1] + "'");
  TArgs args;
  const auto take = [&](const std::string& a, auto value) {
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
    } else
      return false;
    return true;
  };
  WalkArgs(argc, argv, take, [&](const std::string& a) {
    if (!args.Layout.empty()) throw EUsage("more than one layout file given");
    args.Layout = a;
  });
  if (args.Layout.empty()) throw EUsage("no layout file given");
  return args;
}

TProfileArgs ParseProfileArgs(int argc, char** argv) {
  TProfileArgs args;
  const auto take = [&](const std::string& a, auto value) {
    if (a == "--json")
      args.Json = true;
    else if (a == "--svg")
      args.Svg = value();
    else if (a == "--dxf")
      args.Dxf = value();
    else if (a == "--layer")
      args.Layers.emplace_back(value());
    else if (a == "--join-tol")
      args.Options.JoinTol = PositiveNumber(a, value());
    else if (a == "--arc-tol")
      args.Options.ArcTol = PositiveNumber(a, value());
    else
      return false;
    return true;
  };
  WalkArgs(argc, argv, take, [&](const std::string& a) {
    if (!args.Drawing.empty()) throw EUsage("more than one drawing given");
    args.Drawing = a;
  });
  if (args.Drawing.empty()) throw EUsage("no drawing given");
  args.Options.WantArcs = !args.Dxf.empty();
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

// One line on standard error and exit code 2 for anything that goes wrong, whatever raised it.
int Fail(const std::string& Where, const char* What) {
  std::string line = What;
  std::replace(line.begin(), line.end(), '\n', ' ');
  std::cerr << "orvane: " << Where << line << "\n";
  return 2;
}

// Everything after the arguments: read, check, report. Exit code as for main.
int Run(const TArgs& Args) {
  std::vector<TLayout> layouts;
  const auto parseStart = std::chrono::steady_clock::now();
  try {
    layouts = ReadLayoutFile(Args.Layout);
    if (Args.Solution >= 0) {
      // --solution counts from 1, as a person reads the list of solutions.
      if (Args.Solution > static_cast<int>(layouts.size())) {
        throw ELayoutError(Format("has %d solution(s); --solution %d is out of range", static_cast<int>(layouts.size()),
                                  Args.Solution));
      }
      layouts = {layouts[static_cast<std::size_t>(Args.Solution - 1)]};
    }
  } catch (const ELayoutError& e) {
    return Fail(Args.Layout + ": ", e.what());
  }
  const double parseSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - parseStart).count();

  bool clean = true;
  nlohmann::json all = nlohmann::json::array();
  TProgressLine progress(!Args.Json);
  for (std::size_t k = 0; k < layouts.size(); ++k) {
    const TCheckReport report = CheckLayout(layouts[k], Args.Options, std::ref(progress));
    clean = clean && report.Clean;
    if (Args.Json) {
      all.push_back(ReportToJson(report, parseSeconds));
    } else {
      if (k) std::cout << "\n";
      WriteTextReport(std::cout, report, Args.Options, parseSeconds);
    }
    if (!Args.Svg.empty()) {
      std::string path = Args.Svg;
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
      if (!Args.Json) std::cout << "picture: " << path << "\n";
    }
  }
  // File names and ids need not be UTF-8: replace what is not rather than fail.
  if (Args.Json)
    std::cout << (all.size() == 1 ? all[0] : all).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
  return clean ? 0 : 1;
}

// The profile command after its arguments: read, profile, report, write. Every failure is one
// line naming the file.
int RunProfile(const TProfileArgs& Args) {
  const auto fail = [](const std::string& File, const std::string& What) {
    std::string line = What;
    std::replace(line.begin(), line.end(), '\n', ' ');
    std::cerr << "orvane profile: " << File << ": " << line << "\n";
    return 2;
  };
  try {
    const auto parseStart = std::chrono::steady_clock::now();
    const TDxfDrawing drawing = ReadDxfFile(Args.Drawing, Args.Layers);
    const double parseSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - parseStart).count();
    TProfileResult result = ProfileDrawing(drawing, Args.Options, parseSeconds);
    result.File = Args.Drawing;
    const auto write = [&](const std::string& Path, auto&& Writer) {
      std::ofstream out(Path, std::ios::binary);
      Writer(out, result);
      out.flush();
      if (!out) throw EUsage(Path);
    };
    try {
      if (!Args.Dxf.empty()) write(Args.Dxf, WriteProfileDxf);
      if (!Args.Svg.empty()) write(Args.Svg, WriteProfileSvg);
    } catch (const EUsage& e) {
      return fail(e.what(), "cannot write the file");
    }
    if (Args.Json)
      std::cout << ProfileToJson(result).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
    else
      WriteProfileText(std::cout, result);
    return result.ExitCode();
  } catch (const EDxfError& e) {
    return fail(Args.Drawing, e.what());
  } catch (const Exception& e) {
    return fail(Args.Drawing, e.what());
  } catch (const std::bad_alloc&) {
    return fail(Args.Drawing, "out of memory");
  } catch (const std::exception& e) {
    return fail(Args.Drawing, e.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  TArgs args;
  try {
    const std::string info = InfoRequest(argc, argv);
    if (!info.empty()) {
      std::cout << info;
      return 0;
    }
    if (argc >= 2 && std::string(argv[1]) == "profile") return RunProfile(ParseProfileArgs(argc, argv));
    args = ParseArgs(argc, argv);
  } catch (const EUsage& e) {
    std::cerr << "orvane: " << e.what() << " (orvane --help lists the commands and options)\n";
    return 2;
  }
  const std::string where = args.Layout + ": ";
  try {
    return Run(args);
  } catch (const Exception& e) {
    // A ring the kernel refuses.
    return Fail(where, e.what());
  } catch (const std::bad_alloc&) {
    return Fail(where, "out of memory");
  } catch (const std::exception& e) {
    return Fail(where, e.what());
  } catch (...) {
    return Fail(where, "unexpected failure");
  }
}
