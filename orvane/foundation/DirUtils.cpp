#include "orvane/foundation/DirUtils.h"

#include "orvane/foundation/Exception.h"

namespace orvane {

namespace {

[[noreturn]] void BadParam(const char* Method) { throw Exception(Format("[Error] TDirUtils.%s: 参数错误", Method)); }

// Quarter index of an axis direction (right 0, up 1, left 2, down 3), or -1.
int QuarterOf(TDir Dir) {
  switch (Dir) {
    case TDir::dirRight: return 0;
    case TDir::dirUp: return 1;
    case TDir::dirLeft: return 2;
    case TDir::dirDown: return 3;
    default: return -1;
  }
}

constexpr TDir QuarterDirs[4] = {TDir::dirRight, TDir::dirUp, TDir::dirLeft, TDir::dirDown};

}  // namespace

TDir TDirUtils::WindowsDirToDir(int WindowsDir) {
  switch (WindowsDir) {
    case 37: return TDir::dirLeft;
    case 38: return TDir::dirUp;
    case 39: return TDir::dirRight;
    case 40: return TDir::dirDown;
    default: BadParam("WindowsDirToDir");
  }
}

int TDirUtils::DirToWindowsDir(TDir Dir) {
  switch (Dir) {
    case TDir::dirLeft: return 37;
    case TDir::dirUp: return 38;
    case TDir::dirRight: return 39;
    case TDir::dirDown: return 40;
    default: BadParam("DirToWindowsDir");
  }
}

TPoint2D TDirUtils::DirToVec(TDir Dir) {
  switch (Dir) {
    case TDir::dirLeft: return {-1.0, 0.0};
    case TDir::dirRight: return {1.0, 0.0};
    case TDir::dirDown: return {0.0, -1.0};
    case TDir::dirUp: return {0.0, 1.0};
    default: BadParam("DirToVec");
  }
}

int TDirUtils::ModWithDivisor(int Dividend, int Divisor) {
  if (Divisor == 0) throw EParamError("[Error] TDirUtils.ModWithDivisor: 参数错误");
  // C++ % truncates toward zero; shift a remainder of the wrong sign by one divisor.
  const long long r = static_cast<long long>(Dividend) % Divisor;
  return static_cast<int>((r != 0 && ((r < 0) != (Divisor < 0))) ? r + Divisor : r);
}

TDir TDirUtils::Reverse(TDir Dir) {
  switch (Dir) {
    case TDir::dirLeft: return TDir::dirRight;
    case TDir::dirRight: return TDir::dirLeft;
    case TDir::dirDown: return TDir::dirUp;
    case TDir::dirUp: return TDir::dirDown;
    case TDir::dirLeftDown: return TDir::dirRightUp;
    case TDir::dirRightUp: return TDir::dirLeftDown;
    case TDir::dirLeftUp: return TDir::dirRightDown;
    case TDir::dirRightDown: return TDir::dirLeftUp;
    default: BadParam("Reverse");
  }
}

TDir TDirUtils::RotateN90Degrees(TDir OriDir, int N) {
  const int q = QuarterOf(OriDir);
  if (q < 0) BadParam("RotateN90Degrees");
  // Reduce N first so that q + N cannot overflow.
  return QuarterDirs[ModWithDivisor(q + ModWithDivisor(N, 4), 4)];
}

}  // namespace orvane
