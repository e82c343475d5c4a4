#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/GeCurve2DFiler.h"
#include "orvane/vertex/VPolyline2DList.h"

using namespace orvane;

namespace {

// Every output of the persistence layer, as bytes.
std::string AllOutputs() {
  TGeLine2D line({1.5, -0.25}, {1.0 / 3.0, 2e-300});
  TGeCircularArc2D arc({0.5, 0.5}, 1.25, 0.75, -2.5);
  TList<TGeCurve2D*> curves;
  curves.Add(&line);
  curves.Add(&arc);
  TGePolyline2D poly(TDynPoints2D{{0.5, -1.0 / 3.0}, {2.5e-7, 1}});
  curves.Add(&poly);
  std::ostringstream xml;
  TGeCurve2DFiler::SaveCurveList(curves, xml);
  std::ostringstream bin;
  {
    TFbsStreamWriter w(bin);
    TGeObject::SaveGeObjToDb(arc, w);
  }
  TVPolyline2DList list;
  list.Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{0.5, 1.0 / 3.0}, {-1e-7, 2.5}}));
  const std::string file = ORVANE_BINARY_DIR "/tests/locale.json";
  list.SaveTo(file);
  std::ifstream in(file, std::ios::binary);
  std::ostringstream json;
  json << in.rdbuf();
  std::ostringstream dump;
  list.WriteToFile(dump, "#123456", false);
  // And what reads back under the locale in force.
  TVPolyline2DList back;
  back.ReadFrom(file);
  std::istringstream xmlIn(xml.str());
  TObjectList<TGeCurve2D> read;
  TGeCurve2DFiler::ReadCurveList(read, xmlIn, "xml");
  return xml.str() + bin.str() + json.str() + dump.str() + FloatToStr((*back[0])[0].Y) + read[1]->ToString();
}

}  // namespace

// A host that runs under a locale with a decimal comma gets the same bytes and values.
TEST(PersistenceLocale, IdenticalBytesUnderADecimalComma) {
  const std::string c = AllOutputs();
  const std::string dir = ORVANE_BINARY_DIR "/tests/locales";
  if (!std::filesystem::exists(dir + "/de_DE.UTF-8")) {
    std::filesystem::create_directories(dir);
    const std::string cmd = "localedef -i de_DE -f UTF-8 " + dir + "/de_DE.UTF-8 >/dev/null 2>&1";
    if (std::system(cmd.c_str()) != 0 && !std::filesystem::exists(dir + "/de_DE.UTF-8")) {
      GTEST_SKIP() << "no de_DE locale and localedef could not make one";
    }
  }
  setenv("LOCPATH", dir.c_str(), 1);
  {
#if defined(__SANITIZE_ADDRESS__)
    // glibc keeps the composite name of a locale switched by name for good.
    __lsan::ScopedDisabler glibcLocaleNames;
#endif
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "the de_DE locale does not load";
  }
  std::locale oldGlobal;
  {
#if defined(__SANITIZE_ADDRESS__)
    __lsan::ScopedDisabler glibcLocaleNames;
#endif
    oldGlobal = std::locale::global(std::locale("de_DE.UTF-8"));
  }
  char probe[16];
  std::snprintf(probe, sizeof probe, "%.1f", 1.5);
  const std::string underComma = AllOutputs();
  {
#if defined(__SANITIZE_ADDRESS__)
    __lsan::ScopedDisabler glibcLocaleNames;
#endif
    std::locale::global(oldGlobal);
    std::setlocale(LC_ALL, "C");
  }
  unsetenv("LOCPATH");
  ASSERT_STREQ(probe, "1,5") << "the locale did not take effect";
  EXPECT_EQ(underComma, c);
}
