// The persistence layer beside the bare parsers it stands on, on the same bytes in one run:
//
//   binary records of 10^5 curves: lines, arcs and polylines of 8 vertices (a third each)
//     ours:  TGeObject::SaveGeObjToDb / ReadFromGeoData through TFbsStreamWriter/Reader
//     bare:  the same doubles written and read as raw little-endian words by a plain loop
//            over a byte buffer: the floor any record layer pays on top of
//   an XML curve file of the same 10^5 curves
//     ours:  TGeCurve2DFiler::ReadCurveList (parse, then every curve built)
//     pugixml: xml_document::load of the same text (the parse alone), and the parse with
//              every number converted by pugixml (what a host reading it alone would do)
//   splines, twice: the part drawings' splines taken in turn, and random cubics with every
//   coordinate at full precision (argument 0 and 1)
//     ours:  binary records of 10^5 of them, written and read as above; an XML curve file of
//            10^4 of them read by TGeCurve2DFiler::ReadCurveList, from a stream as above and
//            from the file by its name, as a host reads a drawing
//     pugixml: xml_document::load of the same XML text, and load_file of the same file. Read
//              from the file, the objects built (ours) and the tree (pugixml's) are freed
//              outside the timing: freeing is no part of reading, and only ours frees an
//              object per curve
//   a JSON point list of 10^6 points
//     ours:  TVPoint2DList::ReadFrom (file read, parse, points stored)
//     nlohmann: the same file read and nlohmann::json::parse into its tree
//
// Before anything is timed the answers are compared: the curves read back from both of our
// forms are those written, and our JSON points equal the numbers in nlohmann's tree.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/GeCurve2DFiler.h"
#include "orvane/splines/GeSpline2D.h"
#include "orvane/vertex/VPoint2DList.h"
#include "splines/DxfSplines.h"

namespace {

using namespace orvane;

constexpr int CurveCount = 100000;
constexpr int PointCount = 1000000;

struct TCurves {
  TObjectList<TGeCurve2D> List;
  std::string Binary;
  std::string Xml;
};

const TCurves& Curves() {
  static const TCurves curves = [] {
    TCurves c;
    std::mt19937_64 rng(24);
    std::uniform_real_distribution<double> u(-1000.0, 1000.0);
    for (int i = 0; i < CurveCount; ++i) {
      if (i % 3 == 0) {
        c.List.Add(std::make_unique<TGeLine2D>(TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng))));
      } else if (i % 3 == 1) {
        TDynPoints2D pts(8);
        for (TPoint2D& p : pts) p = TPoint2D(u(rng), u(rng));
        c.List.Add(std::make_unique<TGePolyline2D>(pts));
      } else {
        c.List.Add(
            std::make_unique<TGeCircularArc2D>(TPoint2D(u(rng), u(rng)), std::abs(u(rng)), u(rng) / 300, u(rng) / 200));
      }
    }
    std::ostringstream bin;
    {
      TFbsStreamWriter w(bin, "bench");
      for (const TGeCurve2D* curve : c.List) TGeObject::SaveGeObjToDb(*curve, w);
      w.Flush();
    }
    c.Binary = bin.str();
    std::ostringstream xml;
    TGeCurve2DFiler::SaveCurveList(c.List, xml);
    c.Xml = xml.str();

    // Both forms give back the curves written.
    std::istringstream in(c.Binary);
    TFbsStreamReader r(in, "bench");
    TObjectList<TGeCurve2D> fromXml;
    std::istringstream xin(c.Xml);
    TGeCurve2DFiler::ReadCurveList(fromXml, xin, "bench");
    if (fromXml.Count() != CurveCount) throw std::runtime_error("XML count differs");
    for (int i = 0; i < CurveCount; ++i) {
      std::unique_ptr<TGeCurve2D> back = TGeObject::ReadFromGeoData<TGeCurve2D>(r);
      if (back == nullptr || !back->Equals(c.List[i]) || !fromXml[i]->Equals(c.List[i])) {
        throw std::runtime_error("a curve does not read back");
      }
    }
    pugi::xml_document doc;
    if (!doc.load_buffer(c.Xml.data(), c.Xml.size())) throw std::runtime_error("pugixml refuses our file");
    if (std::distance(doc.document_element().begin(), doc.document_element().end()) != CurveCount) {
      throw std::runtime_error("pugixml sees another number of curves");
    }
    return c;
  }();
  return curves;
}

// The timed loops, on any list of curves with its binary and XML forms.
void BinaryWrite(benchmark::State& State, const TCurves& c) {
  for (auto _ : State) {
    std::ostringstream out;
    TFbsStreamWriter w(out, "bench");
    for (const TGeCurve2D* curve : c.List) TGeObject::SaveGeObjToDb(*curve, w);
    w.Flush();
    benchmark::DoNotOptimize(out.tellp());
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Binary.size()));
}

void BinaryRead(benchmark::State& State, const TCurves& c) {
  for (auto _ : State) {
    std::istringstream in(c.Binary);
    TFbsStreamReader r(in, "bench");
    int n = 0;
    while (!r.AtEnd()) n += TGeObject::ReadFromGeoData(r) != nullptr ? 1 : 0;
    if (n != c.List.Count()) State.SkipWithError("count differs");
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Binary.size()));
}

void XmlRead(benchmark::State& State, const TCurves& c) {
  for (auto _ : State) {
    std::istringstream in(c.Xml);
    TObjectList<TGeCurve2D> list;
    TGeCurve2DFiler::ReadCurveList(list, in, "bench");
    benchmark::DoNotOptimize(list.Count());
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Xml.size()));
}

void PugixmlParse(benchmark::State& State, const TCurves& c) {
  for (auto _ : State) {
    // From a stream as ours, so that both pay the same copy of the text.
    std::istringstream in(c.Xml);
    pugi::xml_document doc;
    benchmark::DoNotOptimize(doc.load(in));
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Xml.size()));
}

// The same text as a file, read by its name; what was read is freed outside the timing.
const std::string& XmlFile(const TCurves& c) {
  static std::map<const TCurves*, std::string> files;
  std::string& name = files[&c];
  if (name.empty()) {
    name = "/tmp/orvane_bench_curves_" + std::to_string(::getpid()) + "_" + std::to_string(files.size()) + ".xml";
    std::ofstream(name, std::ios::binary) << c.Xml;
  }
  return name;
}

void XmlFileRead(benchmark::State& State, const TCurves& c) {
  const std::string& file = XmlFile(c);
  for (auto _ : State) {
    auto list = std::make_unique<TObjectList<TGeCurve2D>>();
    TGeCurve2DFiler::ReadCurveList(*list, file);
    benchmark::DoNotOptimize(list->Count());
    State.PauseTiming();
    list.reset();
    State.ResumeTiming();
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Xml.size()));
}

void PugixmlFileParse(benchmark::State& State, const TCurves& c) {
  const std::string& file = XmlFile(c);
  for (auto _ : State) {
    auto doc = std::make_unique<pugi::xml_document>();
    benchmark::DoNotOptimize(doc->load_file(file.c_str()));
    State.PauseTiming();
    doc.reset();
    State.ResumeTiming();
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Xml.size()));
}

void BM_Orvane_BinaryWrite(benchmark::State& State) { BinaryWrite(State, Curves()); }
void BM_Orvane_BinaryRead(benchmark::State& State) { BinaryRead(State, Curves()); }

// The doubles of the curves as raw words: what is left of filing without names, tags or
// objects.
std::vector<double> CurveDoubles() {
  std::vector<double> v;
  for (const TGeCurve2D* curve : Curves().List) {
    if (const auto* l = dynamic_cast<const TGeLine2D*>(curve)) {
      v.insert(v.end(), {l->GetLineStart().X, l->GetLineStart().Y, l->GetLineVector().X, l->GetLineVector().Y});
    } else if (const auto* p = dynamic_cast<const TGePolyline2D*>(curve)) {
      for (const TPoint2D& pt : p->GetPointsArray()) v.insert(v.end(), {pt.X, pt.Y});
    } else {
      const auto* a = static_cast<const TGeCircularArc2D*>(curve);
      v.insert(v.end(), {a->GetCenter().X, a->GetCenter().Y, a->GetRadius(), a->GetStartAngle(), a->GetSweepAngle()});
    }
  }
  return v;
}

void BM_Bare_RawWordsWrite(benchmark::State& State) {
  const std::vector<double> v = CurveDoubles();
  for (auto _ : State) {
    std::ostringstream out;
    std::string buf(v.size() * 8, '\0');
    for (std::size_t i = 0; i < v.size(); ++i) {
      const auto bits = std::bit_cast<std::uint64_t>(v[i]);
      for (int k = 0; k < 8; ++k) buf[i * 8 + static_cast<std::size_t>(k)] = static_cast<char>(bits >> (8 * k));
    }
    out.write(buf.data(), static_cast<std::streamsize>(buf.size()));
    benchmark::DoNotOptimize(out.tellp());
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(Curves().Binary.size()));
}

void BM_Bare_RawWordsRead(benchmark::State& State) {
  const std::vector<double> v = CurveDoubles();
  std::string bytes(v.size() * 8, '\0');
  std::memcpy(bytes.data(), v.data(), bytes.size());
  for (auto _ : State) {
    std::istringstream in(bytes);
    std::string buf(bytes.size(), '\0');
    in.read(buf.data(), static_cast<std::streamsize>(buf.size()));
    std::vector<double> back(v.size());
    for (std::size_t i = 0; i < back.size(); ++i) {
      std::uint64_t bits = 0;
      for (int k = 0; k < 8; ++k) {
        bits |= static_cast<std::uint64_t>(static_cast<unsigned char>(buf[i * 8 + static_cast<std::size_t>(k)]))
                << (8 * k);
      }
      back[i] = std::bit_cast<double>(bits);
    }
    benchmark::DoNotOptimize(back.data());
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(Curves().Binary.size()));
}

void BM_Orvane_XmlRead(benchmark::State& State) { XmlRead(State, Curves()); }

void BM_Pugixml_Parse(benchmark::State& State) { PugixmlParse(State, Curves()); }

// What a host that reads the file with pugixml alone does: the parse, then every number
// through pugixml's own conversion.
void BM_Pugixml_ParseAndConvert(benchmark::State& State) {
  const TCurves& c = Curves();
  for (auto _ : State) {
    std::istringstream in(c.Xml);
    pugi::xml_document doc;
    doc.load(in);
    double sum = 0.0;
    for (const pugi::xml_node curve : doc.document_element().children()) {
      for (const pugi::xml_node value : curve.children()) {
        for (const pugi::xml_attribute a : value.attributes()) sum += a.as_double();
        sum += value.text().as_double();
      }
    }
    benchmark::DoNotOptimize(sum);
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Xml.size()));
}

constexpr int SplineCount = 100000;
constexpr int XmlSplineCount = 10000;

bool SameSpline(const TGeCurve2D* A, const TGeCurve2D* B) {
  const auto* a = dynamic_cast<const TGeSpline2D*>(A);
  const auto* b = dynamic_cast<const TGeSpline2D*>(B);
  const auto same = [](const auto& U, const auto& V) {
    return U.size() == V.size() && std::memcmp(U.data(), V.data(), U.size() * sizeof(U[0])) == 0;
  };
  return a != nullptr && b != nullptr && a->GetDegree() == b->GetDegree() &&
         same(a->GetKnotVector(), b->GetKnotVector()) && same(a->GetCtrlPoints(), b->GetCtrlPoints()) &&
         same(a->GetWeights(), b->GetWeights());
}

// Kind 0: the splines of the part drawings (coordinates of 6 to 9 digits, knots 0 and 1),
// taken in turn until there are enough. Kind 1: random cubics of 8 control points with
// every coordinate at full precision, half of them rational, on clamped uniform knots.
// Empty without the drawings.
TCurves MakeSplines(int Kind) {
  TCurves c;
  if (Kind == 0) {
    std::vector<std::unique_ptr<TGeSpline2D>> drawn;
    const std::filesystem::path dir = ORVANE_SHARED_DATA_DIR "/curves";
    if (!std::filesystem::exists(dir)) return c;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
      if (entry.path().extension() != ".dxf") continue;
      for (orvane::testing::TDxfSpline& d : orvane::testing::ReadDxfSplines(entry.path())) {
        if (d.Weights.empty()) d.Weights.assign(d.Pts.size(), 1.0);
        if (d.Flags & 2) {
          drawn.push_back(internal::WrapPeriodicSpline(d.Pts, d.Weights, d.Knots, d.Degree));
          continue;
        }
        auto s = std::make_unique<TGeSpline2D>(static_cast<int>(d.Pts.size()), d.Degree);
        for (int k = 0; k < s->GetCtrlPointCount(); ++k) s->SetCtrlPoint(k, d.Pts[k]), s->SetWeight(k, d.Weights[k]);
        for (int k = 0; k < s->GetKnotCount(); ++k) s->SetKnots(k, d.Knots[k]);
        drawn.push_back(std::move(s));
      }
    }
    for (std::size_t i = 0; i < SplineCount; ++i) c.List.Add(drawn[i % drawn.size()]->CloneAs<TGeCurve2D>());
  } else {
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> u(-1000.0, 1000.0);
    std::uniform_real_distribution<double> w(0.5, 2.0);
    constexpr int n = 8;
    for (int i = 0; i < SplineCount; ++i) {
      auto s = std::make_unique<TGeSpline2D>(n, 3);
      for (int k = 0; k < n; ++k) {
        s->SetCtrlPoint(k, {u(rng), u(rng)});
        s->SetWeight(k, i % 2 == 0 ? w(rng) : 1.0);
      }
      for (int k = 0; k < n + 4; ++k) s->SetKnots(k, std::clamp(k - 3, 0, n - 3) / double(n - 3));
      c.List.Add(std::move(s));
    }
  }
  std::ostringstream bin;
  {
    TFbsStreamWriter w(bin, "bench");
    for (const TGeCurve2D* curve : c.List) TGeObject::SaveGeObjToDb(*curve, w);
    w.Flush();
  }
  c.Binary = bin.str();
  TList<TGeCurve2D*> first;
  for (int i = 0; i < XmlSplineCount; ++i) first.Add(c.List[i]);
  std::ostringstream xml;
  TGeCurve2DFiler::SaveCurveList(first, xml);
  c.Xml = xml.str();

  // Both forms give back the splines written, to the bit.
  std::istringstream in(c.Binary);
  TFbsStreamReader r(in, "bench");
  for (int i = 0; i < SplineCount; ++i) {
    if (!SameSpline(TGeObject::ReadFromGeoData<TGeCurve2D>(r).get(), c.List[i])) {
      throw std::runtime_error("a spline does not read back from the binary form");
    }
  }
  TObjectList<TGeCurve2D> fromXml;
  std::istringstream xin(c.Xml);
  TGeCurve2DFiler::ReadCurveList(fromXml, xin, "bench");
  if (fromXml.Count() != XmlSplineCount) throw std::runtime_error("XML spline count differs");
  for (int i = 0; i < XmlSplineCount; ++i) {
    if (!SameSpline(fromXml[i], c.List[i])) throw std::runtime_error("a spline does not read back from XML");
  }
  pugi::xml_document doc;
  if (!doc.load_buffer(c.Xml.data(), c.Xml.size())) throw std::runtime_error("pugixml refuses our file");
  if (std::distance(doc.document_element().begin(), doc.document_element().end()) != XmlSplineCount) {
    throw std::runtime_error("pugixml sees another number of splines");
  }
  return c;
}

// The splines of kind State.range(0), or nil (and the benchmark skipped) without them.
const TCurves* Splines(benchmark::State& State) {
  static const TCurves kinds[2] = {MakeSplines(0), MakeSplines(1)};
  const TCurves& c = kinds[State.range(0)];
  if (c.List.Count() == 0) {
    State.SkipWithError("no part drawings at " ORVANE_SHARED_DATA_DIR "/curves");
    return nullptr;
  }
  State.SetLabel(State.range(0) == 0 ? "drawings" : "random");
  return &c;
}

void BM_Orvane_SplineBinaryWrite(benchmark::State& State) {
  if (const TCurves* c = Splines(State)) BinaryWrite(State, *c);
}

void BM_Orvane_SplineBinaryRead(benchmark::State& State) {
  if (const TCurves* c = Splines(State)) BinaryRead(State, *c);
}

void BM_Orvane_SplineXmlRead(benchmark::State& State) {
  if (const TCurves* c = Splines(State)) XmlRead(State, *c);
}

void BM_Pugixml_SplineParse(benchmark::State& State) {
  if (const TCurves* c = Splines(State)) PugixmlParse(State, *c);
}

void BM_Orvane_SplineXmlFileRead(benchmark::State& State) {
  if (const TCurves* c = Splines(State)) XmlFileRead(State, *c);
}

void BM_Pugixml_SplineFileParse(benchmark::State& State) {
  if (const TCurves* c = Splines(State)) PugixmlFileParse(State, *c);
}

const std::string& PointsFile() {
  static const std::string file = [] {
    std::string name = "/tmp/orvane_bench_points_" + std::to_string(::getpid()) + ".json";
    std::mt19937_64 rng(8);
    std::uniform_real_distribution<double> u(-1e4, 1e4);
    TVPoint2DList pts;
    for (int i = 0; i < PointCount; ++i) pts.Add({u(rng), u(rng)});
    pts.SaveTo(name);
    // Our points are the numbers of nlohmann's tree.
    TVPoint2DList back;
    back.ReadFrom(name);
    std::ifstream f(name, std::ios::binary);
    const nlohmann::json doc = nlohmann::json::parse(f);
    if (back.Count() != PointCount || doc.size() != static_cast<std::size_t>(PointCount)) {
      throw std::runtime_error("JSON counts differ");
    }
    for (int i = 0; i < PointCount; ++i) {
      if (back[i].X != doc[static_cast<std::size_t>(i)][0].get<double>() ||
          back[i].Y != doc[static_cast<std::size_t>(i)][1].get<double>() || back[i].X != pts[i].X) {
        throw std::runtime_error("JSON points differ");
      }
    }
    return name;
  }();
  return file;
}

void BM_Orvane_JsonRead(benchmark::State& State) {
  const std::string& file = PointsFile();
  TVPoint2DList pts;
  for (auto _ : State) {
    pts.ReadFrom(file);
    benchmark::DoNotOptimize(pts.Count());
  }
  State.SetItemsProcessed(State.iterations() * PointCount);
}

void BM_Nlohmann_JsonParse(benchmark::State& State) {
  const std::string& file = PointsFile();
  for (auto _ : State) {
    std::ifstream f(file, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    const nlohmann::json doc = nlohmann::json::parse(text);
    benchmark::DoNotOptimize(doc.size());
  }
  State.SetItemsProcessed(State.iterations() * PointCount);
}

}  // namespace

BENCHMARK(BM_Orvane_BinaryWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bare_RawWordsWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_BinaryRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bare_RawWordsRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_XmlRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pugixml_Parse)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pugixml_ParseAndConvert)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_SplineBinaryWrite)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_SplineBinaryRead)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_SplineXmlRead)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pugixml_SplineParse)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_SplineXmlFileRead)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pugixml_SplineFileParse)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_JsonRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Nlohmann_JsonParse)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
