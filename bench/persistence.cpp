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
//   a JSON point list of 10^6 points
//     ours:  TVPoint2DList::ReadFrom (file read, parse, points stored)
//     nlohmann: the same file read and nlohmann::json::parse into its tree
//
// Before anything is timed the answers are compared: the curves read back from both of our
// forms are those written, and our JSON points equal the numbers in nlohmann's tree.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <bit>
#include <cstring>
#include <fstream>
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
#include "orvane/vertex/VPoint2DList.h"

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

void BM_Orvane_BinaryWrite(benchmark::State& State) {
  const TCurves& c = Curves();
  for (auto _ : State) {
    std::ostringstream out;
    TFbsStreamWriter w(out, "bench");
    for (const TGeCurve2D* curve : c.List) TGeObject::SaveGeObjToDb(*curve, w);
    w.Flush();
    benchmark::DoNotOptimize(out.tellp());
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Binary.size()));
}

void BM_Orvane_BinaryRead(benchmark::State& State) {
  const TCurves& c = Curves();
  for (auto _ : State) {
    std::istringstream in(c.Binary);
    TFbsStreamReader r(in, "bench");
    int n = 0;
    while (!r.AtEnd()) n += TGeObject::ReadFromGeoData(r) != nullptr ? 1 : 0;
    if (n != CurveCount) State.SkipWithError("count differs");
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Binary.size()));
}

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

void BM_Orvane_XmlRead(benchmark::State& State) {
  const TCurves& c = Curves();
  for (auto _ : State) {
    std::istringstream in(c.Xml);
    TObjectList<TGeCurve2D> list;
    TGeCurve2DFiler::ReadCurveList(list, in, "bench");
    benchmark::DoNotOptimize(list.Count());
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Xml.size()));
}

void BM_Pugixml_Parse(benchmark::State& State) {
  const TCurves& c = Curves();
  for (auto _ : State) {
    // From a stream as ours, so that both pay the same copy of the text.
    std::istringstream in(c.Xml);
    pugi::xml_document doc;
    benchmark::DoNotOptimize(doc.load(in));
  }
  State.SetBytesProcessed(State.iterations() * static_cast<std::int64_t>(c.Xml.size()));
}

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
BENCHMARK(BM_Orvane_JsonRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Nlohmann_JsonParse)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
