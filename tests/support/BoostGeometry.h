#pragma once
// Boost.Geometry, the tests' second method for areas and Booleans of polygons, with the
// model types they use: counter-clockwise, closed polygons of double points.

// Boost.Geometry's rescaling trips a false maybe-uninitialized warning at -O2.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/multi_polygon.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#pragma GCC diagnostic pop

namespace orvane::testing {

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BPolygon = bg::model::polygon<BPoint, false, true>;
using BMulti = bg::model::multi_polygon<BPolygon>;

}  // namespace orvane::testing
