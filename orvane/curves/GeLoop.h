#pragma once
// TGeLoop: a closed chain of straight edges held as its vertices, without a repeated closing
// vertex: edge i runs from vertex i to vertex i + 1, and the last edge back to vertex 0. A
// plain region object for hosts, beside the curve tree. It caches its box and its signed
// area (positive counter-clockwise), and for large loops an index of its edges by height
// that the point tests use; every change of the vertices clears what it affects.
//
// Vertices are finite points: operations that bring in or compute vertices raise
// EParamError for any other and leave the loop as it was. Point queries with a point that is
// not finite give their neutral answer (false, srOut). Like every caching object, one loop
// is not read from two threads at once.

#include <initializer_list>
#include <memory>
#include <string>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Persistent.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {

class ORVANE_API TGeLoop final : public TPersistent {
 public:
  // No vertices.
  TGeLoop();
  // All points as they stand, repeated ones included.
  explicit TGeLoop(const TList<TPoint2D>& Points);
  // Through SetVertices, with its clean-up.
  explicit TGeLoop(const TDynPoints2D& pnts);
  // As the array form.
  TGeLoop(std::initializer_list<TPoint2D> pnts) : TGeLoop(TDynPoints2D(pnts)) {}
  // The four corners from (XMin, YMin) on, counter-clockwise for an ordinary box; the box is
  // cached at once. EParamError for a box that is not finite.
  static std::unique_ptr<TGeLoop> CreateRect(const TRect2D& Rect);
  ~TGeLoop() override;

  // Editing.

  void Add(const TPoint2D& pnt);
  // Removes vertex idx, wrapped onto the loop like GetVertex.
  void Delete(int idx);
  // Clears the vertices, then takes pnts, collapsing each run of exactly equal neighbours to
  // one vertex and dropping closing vertices that exactly repeat the first.
  void SetVertices(const TDynPoints2D& pnts);
  void SetVertices(const TVPolyline2D& Poly);
  // Marks the box and the area to be computed again.
  void Invalidate();
  // Reversal through SetVertices, with its clean-up: vertex 0 moves to the end.
  void Reverse();
  void SetIsClockWise(bool Value);
  // Appends a copy of vertex 0 unless the loop is already closed (1e-6). The new edge has
  // no length, so box and area stay.
  void SetClosed();
  void TransformBy(const TMatrix2D& mtx);
  // Rotation by Ang radians about ACenter.
  void Rotate(double Ang, const TPoint2D& ACenter);
  // A shift changes neither size nor area: the cached box moves along, the area stays.
  void Translate(const TPoint2D& vec);

  // Vertices and edges. Indices wrap onto the loop from either side, so -1 is the last
  // vertex and GetVertexCount() is vertex 0. On a loop without vertices the indexed queries
  // raise Exception "[Error] TGeLoop.<operation>: 下标越界".

  TPoint2D GetVertex(int idx) const;
  int GetVertexCount() const { return FVertices.Count(); }
  TLine2D GetEdge(int idx) const;
  // A loop with one or two vertices has as many edges, some of no length.
  int GetEdgeCount() const { return GetVertexCount(); }
  TList<TLine2D> GetEdgeList() const;
  // The unit direction of edge idx turned a quarter counter-clockwise: the outward side of
  // a clockwise loop. FZero for an edge of no length.
  TPoint2D GetNormal(int idx) const;
  TList<TPoint2D> GetPointList() const;
  // The vertices themselves, for reading; changes go through the loop's own operations so
  // that its caches stay true.
  const TVPolyline2D& GetPolyline2D() const { return FVertices; }
  // A new polyline with the vertices, without a closing vertex.
  std::unique_ptr<TVPolyline2D> ToPolyline2D() const;
  // The parameter runs edge by edge, one unit each: edge floor(param) at param minus that.
  // Parameters outside 0 .. count wrap round the loop. EParamError for one that is not
  // finite.
  TPoint2D EvalPoint(double param) const;

  // Measures.

  // Signed area, positive counter-clockwise; 0 without vertices.
  double GetArea() const;
  // Computes the area into the cache.
  void CalcArea() const;
  // The invalid box without vertices.
  TRect2D GetBoundBox() const;
  // The area centroid of the region. A loop without area gives the centre of its edges by
  // length, and one without length its vertex 0; no vertices give Org2D. The caches stay as
  // they are.
  TPoint2D GetGravityCenter() const;
  bool GetIsClockWise() const { return GetArea() < 0.0; }

  // Relations.

  // The ordinal of srOn, srIn or srOut, as TVPolyline2D::RelationWithPoint on the closed
  // loop; srOut without vertices. EParamError for a Tol that is not finite.
  int RelationWithPt(const TPoint2D& Pt, double Tol) const;
  // Even-odd crossing test with a margin of 1e-6 in its comparisons.
  bool Contains(const TPoint2D& pnt) const;
  // Crossing test along the ray toward +X, on the point rounded to single precision; false
  // with fewer than 3 vertices. It differs from Contains on the boundary.
  bool PtInPoly(const TPoint2D& ptHit) const;
  // Whether Loop lies inside this loop, for loops whose boundaries do not cross: its
  // vertices and edge midpoints, the closing edge included, are classified in turn and the
  // first that is not on the boundary decides. All on the boundary, or fewer than 2
  // vertices in Loop, give true.
  bool Contains(const TGeLoop& Loop, double Tol) const;

  // Copying.

  // Into another TGeLoop: its vertices become these, as they stand; the box goes along.
  void AssignTo(TPersistent& Dest) const override;
  std::unique_ptr<TGeLoop> Clone() const;
  std::string ClassName() const override;

 private:
  struct TPointIndex;

  // Vertex i for 0 <= i < count, unchecked.
  const TPoint2D& V(int i) const { return FVertices.Points()[static_cast<std::size_t>(i)]; }
  // idx wrapped onto 0 .. count - 1; raises the index error named after Where when empty.
  int Wrap(int idx, const char* Where) const;
  // Replaces the vertices by Pts, which the caller has checked, and clears the caches.
  void ReplaceVertices(TDynPoints2D&& Pts);
  // The edge index when it pays, else null. Built on the second point query after a change,
  // so a loop asked once costs one scan.
  const TPointIndex* PointIndex() const;
  void ClearIndex();

  TVPolyline2D FVertices;
  mutable TRect2D FBox;
  mutable bool FBoxInvalid = true;
  mutable double FArea = 0.0;
  mutable bool FIsAreaValid = false;
  mutable std::unique_ptr<TPointIndex> FIndex;
  mutable int FScansSinceChange = 0;
};

}  // namespace orvane
