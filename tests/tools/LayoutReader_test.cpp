// The layout reader on simdjson against the same reader on nlohmann: the same layouts from
// every published file, and the same layouts or the same message for seeded random damage
// to small layouts and for the corners where the two parsers differ.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "Layout.h"
#include "support/SharedData.h"

using namespace orvane;
using namespace orvane::tool;

namespace {

// The layouts read, as text to compare, or the message of the refusal.
std::string Outcome(std::vector<TLayout> (*Parse)(const std::string&, const std::string&), const std::string& Text) {
  std::ostringstream out;
  out.precision(17);
  try {
    for (const TLayout& l : Parse(Text, "doc.json")) {
      out << l.Name << "|" << l.ContainerHeight << "|";
      for (const TPoint2D& p : l.Container) out << p.X << "," << p.Y << ";";
      for (const TLayoutPart& part : l.Parts) {
        out << "\n" << part.Id << ":";
        for (const TPoint2D& p : part.Outer) out << p.X << "," << p.Y << ";";
        for (const TDynPoints2D& hole : part.Holes) {
          out << "/";
          for (const TPoint2D& p : hole) out << p.X << "," << p.Y << ";";
        }
        for (const std::vector<double>& ring : part.Bulges) {
          out << "~";
          for (double b : ring) out << b << ";";
        }
      }
      if (l.Expected)
        out << "\nexpected " << l.Expected->Clean << " " << l.Expected->OverlapMaxRelative << " "
            << l.Expected->MaxProtrusion;
      out << "\n";
    }
  } catch (const ELayoutError& e) {
    return std::string("refused: ") + e.what();
  } catch (const std::exception& e) {
    return std::string("escaped: ") + e.what();
  }
  return out.str();
}

void ExpectSame(const std::string& Text, const std::string& Label) {
  const std::string fast = Outcome(&ParseLayout, Text);
  const std::string reference = Outcome(&ParseLayoutWithNlohmann, Text);
  EXPECT_EQ(fast, reference) << Label << ": " << Text.substr(0, 300);
  EXPECT_EQ(fast.rfind("escaped", 0), std::string::npos) << Label;
}

TEST(LayoutReader, PublishedLayoutsReadAlike) {
  const auto layouts = orvane::testing::DataFiles("layouts", ".json");
  if (layouts.empty()) GTEST_SKIP() << "outside layout data not found in " ORVANE_SHARED_DATA_DIR;
  int files = 0;
  for (const std::filesystem::path& layout : layouts) {
    std::ifstream in(layout, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    const std::string fast = Outcome(&ParseLayout, text.str());
    EXPECT_EQ(fast.rfind("refused", 0), std::string::npos) << layout << ": " << fast;
    EXPECT_EQ(fast, Outcome(&ParseLayoutWithNlohmann, text.str())) << layout;
    ++files;
  }
  EXPECT_GT(files, 10);
}

TEST(LayoutReader, DamagedAndOddDocumentsGetTheSameAnswer) {
  // Where the parsers part ways: a byte-order mark, repeated keys (the last counts), ids
  // that are numbers of either kind, minus zero or arrays, numbers beyond the double range
  // or beyond 64-bit integers, values of the wrong type, trailing text, a solution that is
  // not an object.
  const std::string sq = "[[0,0],[1,0],[1,1],[0,1]]";
  const std::vector<std::string> odd = {
      "\xEF\xBB\xBF{\"parts\":[{\"id\":1,\"outer\":" + sq + "}]}",
      "{\"parts\":[{\"id\":1,\"outer\":[[0,0]],\"outer\":" + sq + ",\"id\":\"b\"}]}",
      "{\"parts\":[{\"id\":-0,\"outer\":" + sq + "},{\"id\":7.50,\"outer\":" + sq + "},{\"id\":1e2,\"outer\":" + sq +
          "},{\"id\":[1,{\"a\":null}],\"outer\":" + sq + "},{\"id\":18446744073709551615,\"outer\":" + sq + "}]}",
      "{\"parts\":[{\"id\":123456789012345678901234567890,\"outer\":" + sq + "}]}",
      "{\"parts\":[{\"outer\":[[0,0],[1e400,0],[0,1]]}]}",
      "{\"parts\":[{\"outer\":[[0,0],[1e-400,0],[0,1]]}]}",
      "{\"shapes\":[{\"part\":0,\"outer\":" + sq + "}],\"placements\":[{\"part\":0,\"rotation_deg\":\"90\"}]}",
      "{\"shapes\":[{\"part\":0,\"outer\":" + sq + "}],\"placements\":[{\"part\":0,\"rotation_deg\":true}]}",
      "{\"shapes\":[{\"part\":0,\"outer\":" + sq + "}],\"solutions\":[3]}",
      "{\"shapes\":[{\"part\":0,\"outer\":" + sq + "}],\"solutions\":[{\"algorithm\":5,\"placements\":[]}]}",
      "{\"shapes\":[{\"part\":0,\"outer\":" + sq + "}],\"placements\":[],\"checks\":{\"clean\":1}}",
      "{\"parts\":[]} x",
      "",
      "{\"parts\":[{\"id\":\"\\ud800\",\"outer\":" + sq + "}]}",
      // Nested 64 levels deep, the most that is read, and 65.
      "{\"parts\":[{\"id\":" + std::string(61, '[') + std::string(61, ']') + ",\"outer\":" + sq + "}]}",
      "{\"parts\":[{\"id\":" + std::string(62, '[') + std::string(62, ']') + ",\"outer\":" + sq + "}]}",
      std::string("{\"parts\":[]}") + '\0',
      // Bulges: a fourth element, beyond the limit or the double range, not a number, two arcs
      // on one circle in opposite senses (no area).
      "{\"parts\":[{\"outer\":[[0,0],[1,0,0.5,2],[1,1]]},{\"outer\":[[0,0],[1,0,1e300],[1,1]]}]}",
      "{\"parts\":[{\"outer\":[[0,0],[1,0,1e400],[1,1]]}]}", "{\"parts\":[{\"outer\":[[0,0],[1,0,null],[1,1]]}]}",
      "{\"parts\":[{\"outer\":[[0,0,1],[1,0,-1]]}]}",
  };
  for (std::size_t k = 0; k < odd.size(); ++k) ExpectSame(odd[k], "odd case " + std::to_string(k));

  // Seeded damage to small documents of each format: a byte deleted, replaced or inserted
  // from JSON's own alphabet, or the text cut short.
  const std::vector<std::string> seeds = {
      "{\"container\":{\"outer\":[[0,0],[9,0],[9,9],[0,9]]},\"strip\":{\"height\":9},\"parts\":[{\"id\":\"a\",\"outer\":"
      "[[1,1],[4,1],[4,4],[1,4]],\"holes\":[[[2,2],[3,2],[3,3],[2,3]]]},{\"id\":2,\"outer\":[[5,5],[6,5],[6,6]]}]}",
      "{\"container\":[[0,0],[20,0],[20,9],[0,9]],\"shapes\":[{\"part\":0,\"outer\":[[0,0],[2,0],[2,1],[0,1]],"
      "\"holes\":[]},{\"part\":\"s\",\"outer\":[[0,0],[1,0],[0,1]]}],\"solutions\":[{\"algorithm\":\"x\",\"placements\":["
      "{\"part\":0,\"rotation_deg\":90,\"translation\":[3,1]},{\"part\":\"s\",\"translation\":[8,2]}],\"checks\":{"
      "\"clean\":true,\"overlap_max_relative_to_smaller_part\":0,\"max_protrusion_outside_container\":0.5}}]}",
      "{\"shapes\":[{\"part\":1,\"outer\":[[0,0],[2,0],[2,1],[0,1]]}],\"placements\":[{\"part\":1,\"rotation_deg\":30,"
      "\"translation\":[1,1]},{\"part\":1,\"placed\":[[5,5],[7,5],[7,6],[5,6]]}],\"checks\":{\"clean\":false}}",
      "{\"parts\":[{\"id\":1,\"outer\":[[0,0],[4,0,0.5],[4,3],[0,3,-0.25]],\"holes\":[[[1,1,1],[2,1,1]]]},{\"outer\":"
      "[[5,0,1],[7,0,1]]}]}",
  };
  const std::string alphabet = "[]{},:\"0123456789.-+eE tfnrul\\x";
  std::mt19937 rng(20260315);
  int refused = 0;
  int read = 0;
  for (int round = 0; round < 5000; ++round) {
    std::string text = seeds[static_cast<std::size_t>(round) % seeds.size()];
    const int edits = 1 + static_cast<int>(rng() % 3);
    for (int e = 0; e < edits && !text.empty(); ++e) {
      const std::size_t at = rng() % text.size();
      const char c = alphabet[rng() % alphabet.size()];
      switch (rng() % 4) {
        case 0:
          text.erase(at, 1);
          break;
        case 1:
          text[at] = c;
          break;
        case 2:
          text.insert(at, 1, c);
          break;
        default:
          text.resize(at);
      }
    }
    const std::string fast = Outcome(&ParseLayout, text);
    ASSERT_EQ(fast, Outcome(&ParseLayoutWithNlohmann, text)) << "round " << round << ": " << text;
    ASSERT_EQ(fast.rfind("escaped", 0), std::string::npos) << text;
    (fast.rfind("refused", 0) == 0 ? refused : read) += 1;
  }
  // Both outcomes are well represented, so the comparison has bite either way.
  EXPECT_GT(refused, 1000);
  EXPECT_GT(read, 300);
}

}  // namespace
