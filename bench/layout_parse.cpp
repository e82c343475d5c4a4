// Reading a layout file's text into layouts, as `orvane check` does before it checks: the
// reader on simdjson against the same reader on nlohmann, which it replaces, in MB/s of
// JSON text. Both include the checks of the rings that follow the parse. The text is in
// memory, with the padding that the tool's file reading leaves after it. Layouts: every
// sparrow layout at hand, largest first; both readers must give the same layouts.
// The reader's test of each ring for crossings is also timed alone on the two largest
// layouts: the search behind TVPolyline2D::IsSelfIntersect(0), on each ring in place as the
// reader runs it, against GEOS isSimple on the same rings closed.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Layout.h"
#include "orvane/vertex/internal/SelfCrossing.h"

namespace {

namespace fs = std::filesystem;
using namespace orvane;
using namespace orvane::tool;

struct TFile {
  std::string Name;
  std::string Text;
  bool Agree = true;
};

bool SameLayouts(const std::vector<TLayout>& A, const std::vector<TLayout>& B) {
  if (A.size() != B.size()) return false;
  for (std::size_t k = 0; k < A.size(); ++k) {
    if (A[k].Name != B[k].Name || A[k].Container != B[k].Container || A[k].Parts.size() != B[k].Parts.size())
      return false;
    for (std::size_t i = 0; i < A[k].Parts.size(); ++i) {
      const TLayoutPart& p = A[k].Parts[i];
      const TLayoutPart& q = B[k].Parts[i];
      if (p.Id != q.Id || p.Outer != q.Outer || p.Holes != q.Holes) return false;
    }
  }
  return true;
}

std::vector<TFile>& Files() {
  static std::vector<TFile> files;
  return files;
}

template <std::vector<TLayout> (*Parse)(const std::string&, const std::string&)>
void BM_Read(benchmark::State& State, const TFile* F) {
  if (!F->Agree) State.SkipWithError("the two readers give different layouts");
  for (auto _ : State) benchmark::DoNotOptimize(Parse(F->Text, F->Name));
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(F->Text.size()));
}

std::vector<TDynPoints2D> Rings(const TFile& F) {
  std::vector<TDynPoints2D> rings;
  for (const TLayout& l : ParseLayout(F.Text, F.Name)) {
    for (const TLayoutPart& p : l.Parts) rings.push_back(p.Outer);
  }
  return rings;
}

void BM_RingsOrvane(benchmark::State& State, const TFile* F) {
  const std::vector<TDynPoints2D> rings = Rings(*F);
  int crossing = 0;
  for (auto _ : State) {
    for (const TDynPoints2D& r : rings) crossing += internal::SelfCrosses(r, 0.0, true) ? 1 : 0;
  }
  if (crossing != 0) State.SkipWithError("a ring of a valid layout crosses itself");
  State.counters["rings"] = static_cast<double>(rings.size());
}

void BM_RingsGeos(benchmark::State& State, const TFile* F) {
  GEOSContextHandle_t h = GEOS_init_r();
  std::vector<GEOSGeometry*> rings;
  for (const TDynPoints2D& r : Rings(*F)) {
    GEOSCoordSequence* seq = GEOSCoordSeq_create_r(h, static_cast<unsigned>(r.size() + 1), 2);
    for (std::size_t k = 0; k <= r.size(); ++k) {
      GEOSCoordSeq_setXY_r(h, seq, static_cast<unsigned>(k), r[k % r.size()].X, r[k % r.size()].Y);
    }
    rings.push_back(GEOSGeom_createLinearRing_r(h, seq));
  }
  int crossing = 0;
  for (auto _ : State) {
    for (const GEOSGeometry* r : rings) crossing += GEOSisSimple_r(h, r) == 1 ? 0 : 1;
  }
  if (crossing != 0) State.SkipWithError("a ring of a valid layout crosses itself");
  for (GEOSGeometry* r : rings) GEOSGeom_destroy_r(h, r);
  GEOS_finish_r(h);
}

void Register() {
  const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "layouts";
  if (!fs::exists(dir)) return;
  std::vector<TFile>& files = Files();
  for (const auto& e : fs::directory_iterator(dir)) {
    if (e.path().filename().string().rfind("sparrow_", 0) != 0) continue;
    std::ifstream in(e.path(), std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    TFile f{e.path().filename().string(), text.str(), true};
    // Room after the text for the parser's padding, as ReadLayoutFile leaves.
    f.Text.reserve(f.Text.size() + 64);
    f.Agree = SameLayouts(ParseLayout(f.Text, f.Name), ParseLayoutWithNlohmann(f.Text, f.Name));
    files.push_back(std::move(f));
  }
  std::sort(files.begin(), files.end(), [](const TFile& A, const TFile& B) { return A.Text.size() > B.Text.size(); });
  for (std::size_t k = 0; k < std::min<std::size_t>(2, files.size()); ++k) {
    const TFile* f = &files[k];
    benchmark::RegisterBenchmark(("Rings/orvane/" + f->Name).c_str(), BM_RingsOrvane, f)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("Rings/GEOS/" + f->Name).c_str(), BM_RingsGeos, f)->Unit(benchmark::kMicrosecond);
  }
  for (const TFile& f : files) {
    benchmark::RegisterBenchmark(("Read/simdjson/" + f.Name).c_str(), BM_Read<&ParseLayout>, &f)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("Read/nlohmann/" + f.Name).c_str(), BM_Read<&ParseLayoutWithNlohmann>, &f)
        ->Unit(benchmark::kMillisecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  Register();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
