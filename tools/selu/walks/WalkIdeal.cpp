#include "walks/WalkIdeal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>

namespace selu {
namespace {

using Components = std::array<double, 3>;

Components ToArray(RealPoint const& p) { return {p.x, p.y, p.z}; }
RealPoint ToPoint(Components const& c) { return {c[0], c[1], c[2]}; }

// The two ends of the plane's line in a face, whose points have p[axis] = place.
std::vector<RealPoint> FaceLine(Components const& normal, double distance, Components const& last,
                                std::size_t axis, double place) {
  std::size_t const u = axis == 0 ? 1 : 0, v = axis == 2 ? 1 : 2;
  double const rest = distance - normal[axis] * place;
  std::vector<RealPoint> ends;
  auto const add = [&](double pu, double pv) {
    Components p = {};
    p[axis] = place;
    p[u] = pu;
    p[v] = pv;
    RealPoint const point = ToPoint(p);
    if (std::find(ends.begin(), ends.end(), point) == ends.end()) ends.push_back(point);
  };
  for (auto const& [along, across, swapped] : {std::tuple{u, v, false}, std::tuple{v, u, true}}) {
    if (normal[along] == 0) continue;
    for (double const edge : {0.0, last[across]}) {
      double const cut = (rest - normal[across] * edge) / normal[along];
      if (!(cut >= 0 && cut <= last[along])) continue;
      if (swapped)
        add(edge, cut);
      else
        add(cut, edge);
    }
  }
  return ends;
}

} // namespace

std::vector<RealPoint> Chain(std::vector<Point> const& points, bool isClosed) {
  std::vector<RealPoint> chain;
  chain.reserve(points.size() + 1);
  for (auto const& p : points) chain.push_back(Real(p));
  if (isClosed && !points.empty()) chain.push_back(chain.front());
  return chain;
}

std::vector<std::vector<RealPoint>> BoxOutline(Point const& low, Point const& high) {
  RealPoint const a = Real(low), b = Real(high);
  std::vector<std::vector<RealPoint>> outline;
  for (double const z : {a.z, b.z})
    outline.push_back({{a.x, a.y, z}, {b.x, a.y, z}, {b.x, b.y, z}, {a.x, b.y, z}, {a.x, a.y, z}});
  for (double const x : {a.x, b.x})
    for (double const y : {a.y, b.y}) outline.push_back({{x, y, a.z}, {x, y, b.z}});
  return outline;
}

std::vector<RealPoint> LineThrough(Point const& low, Point const& high,
                                   RealPoint const& direction) {
  Components const a = ToArray(Real(low)), b = ToArray(Real(high));
  Components d = ToArray(direction);
  double const largest = std::max({std::abs(d[0]), std::abs(d[1]), std::abs(d[2])});
  for (double& component : d) component /= largest;
  double reach = std::numeric_limits<double>::infinity();
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (d[axis] != 0) reach = std::min(reach, (b[axis] - a[axis]) / 2 / std::abs(d[axis]));
  Components from = {}, to = {};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    double const middle = (a[axis] + b[axis]) / 2;
    from[axis] = middle - reach * d[axis];
    to[axis] = middle + reach * d[axis];
  }
  return {ToPoint(from), ToPoint(to)};
}

std::vector<std::vector<RealPoint>> PlaneOutline(RealPoint const& normal, double distance,
                                                 ORVA::CSize const& size) {
  Components const n = ToArray(normal);
  Components const last = ToArray(Real(Point(size.x - 1, size.y - 1, size.z - 1)));
  std::vector<std::vector<RealPoint>> outline;
  for (std::size_t axis = 0; axis < 3; ++axis)
    for (double const place : {0.0, last[axis]}) {
      auto line = FaceLine(n, distance, last, axis, place);
      if (line.size() > 2) line = {line.front(), line.back()}; // through a corner, if rounded
      if (line.size() == 2) outline.push_back(std::move(line));
    }
  return outline;
}

} // namespace selu
