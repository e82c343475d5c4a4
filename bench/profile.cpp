// The whole profile run, from DXF file to report, against the ezdxf + shapely pipeline that
// finds the same parts, holes and net areas (tests/tools/profile_oracle.py --areas), both as
// whole processes on the largest drawing at hand (most entities in ../shared/data/curves).
// In-process runs time our DXF parsing and the profiling after it apart. The answers are
// checked to agree before anything is timed.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "DxfDrawing.h"
#include "Profile.h"

namespace {

namespace fs = std::filesystem;
using namespace orvane;
using namespace orvane::tool;

// Our tool beside this program (build-bench/tools/orvane) and the oracle in the sources
// (__FILE__ is relative to the build folder when the build runs there).
const fs::path BuildDir = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
const std::string Tool = (BuildDir / "tools" / "orvane").string();
const std::string Oracle =
    (BuildDir / fs::path(__FILE__).parent_path().parent_path() / "tests" / "tools" / "profile_oracle.py").lexically_normal().string();

std::string LargestDrawing() {
  std::string best;
  int most = -1;
  const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "curves";
  if (!fs::exists(dir)) return best;
  for (const auto& e : fs::directory_iterator(dir)) {
    if (e.path().extension() != ".dxf") continue;
    int count = 0;
    for (const auto& [type, n] : ReadDxfFile(e.path().string()).Read) count += n;
    if (count > most) {
      most = count;
      best = e.path().string();
    }
  }
  return best;
}

const std::string Drawing = LargestDrawing();

std::string Capture(const std::string& Cmd) {
  std::string out;
  FILE* p = ::popen(Cmd.c_str(), "r");
  if (!p) return out;
  std::array<char, 4096> buf;
  std::size_t n;
  while ((n = std::fread(buf.data(), 1, buf.size(), p)) > 0) out.append(buf.data(), n);
  ::pclose(p);
  return out;
}

// Both pipelines find the same parts, holes and net areas (within the peer's flattening).
bool Agree(benchmark::State& State) {
  static int verdict = -1;
  if (verdict < 0) {
    const nlohmann::json ours = nlohmann::json::parse(Capture(Tool + " profile " + Drawing + " --json"), nullptr, false);
    const nlohmann::json peer =
        nlohmann::json::parse(Capture("/usr/bin/python3 -W ignore " + Oracle + " --areas " + Drawing), nullptr, false);
    verdict = 0;
    if (!ours.is_discarded() && !peer.is_discarded() && ours["parts"].size() == peer["parts"].get<std::size_t>()) {
      int holes = 0;
      bool areas = true;
      for (std::size_t k = 0; k < ours["parts"].size(); ++k) {
        holes += ours["parts"][k]["holes"].get<int>();
        const double a = ours["parts"][k]["area"], b = peer["areas"][k];
        areas = areas && std::fabs(a - b) <= 1e-4 * std::fabs(b);
      }
      verdict = areas && holes == peer["holes"].get<int>() ? 1 : 0;
    }
  }
  if (verdict == 0) State.SkipWithError("ours and the ezdxf + shapely pipeline disagree");
  return verdict == 1;
}

void BM_WholeProcess_Orvane(benchmark::State& State) {
  if (Drawing.empty()) return State.SkipWithError("no ../shared/data/curves");
  if (!Agree(State)) return;
  const std::string cmd = Tool + " profile " + Drawing + " --json >/dev/null";
  for (auto _ : State) benchmark::DoNotOptimize(std::system(cmd.c_str()));
  State.SetLabel(fs::path(Drawing).filename().string());
}

void BM_WholeProcess_EzdxfShapely(benchmark::State& State) {
  if (Drawing.empty()) return State.SkipWithError("no ../shared/data/curves");
  if (!Agree(State)) return;
  const std::string cmd = "/usr/bin/python3 -W ignore " + Oracle + " --areas " + Drawing + " >/dev/null";
  for (auto _ : State) benchmark::DoNotOptimize(std::system(cmd.c_str()));
  State.SetLabel(fs::path(Drawing).filename().string());
}

void BM_Parse_Orvane(benchmark::State& State) {
  if (Drawing.empty()) return State.SkipWithError("no ../shared/data/curves");
  for (auto _ : State) benchmark::DoNotOptimize(ReadDxfFile(Drawing).Pieces.size());
}

void BM_Profile_Orvane(benchmark::State& State) {
  if (Drawing.empty()) return State.SkipWithError("no ../shared/data/curves");
  const TDxfDrawing drawing = ReadDxfFile(Drawing);
  for (auto _ : State) benchmark::DoNotOptimize(ProfileDrawing(drawing, {}).Parts.size());
}

}  // namespace

BENCHMARK(BM_WholeProcess_Orvane)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_WholeProcess_EzdxfShapely)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(BM_Parse_Orvane)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Profile_Orvane)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
