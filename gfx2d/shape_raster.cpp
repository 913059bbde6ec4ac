#include "gfx2d/shape_raster.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace vl {
namespace {

// The rows of the ellipse inscribed in a box of width and height.
class EllipseRows {
 public:
  EllipseRows(int width, int height) : width_(width), height_(height) {}
  // Pixels left out at either end of row `j`, or the whole width when the row is empty. A centre (x, y) is
  // inside when (2x + 1 - w)^2 h^2 + (2y + 1 - h)^2 w^2 <= w^2 h^2.
  int Inset(int j) const {
    if (j < 0 || j >= height_) return width_;
    const double h = height_;
    const double v = 2.0 * j + 1 - h;
    const int64_t reach = int64_t(width_ * std::sqrt(h * h - v * v) / h);
    return int(std::min<int64_t>((std::max<int64_t>(width_ - 1 - reach, 0) + 1) / 2, width_));
  }

 private:
  int width_;
  int height_;
};

int64_t CeilDivide(int64_t a, int64_t b) { return a / b + (a % b > 0 ? 1 : 0); }  // b > 0

}  // namespace

void RasteriseEllipse(const Rect& box, int penSize, const Rect& clip, const RowSink& sink) {
  if (box.IsEmpty()) return;
  const int width = box.Width();
  const EllipseRows outer(width, box.Height());
  const bool hasInner = penSize > 0 && penSize < (std::min(width, box.Height()) + 1) / 2;
  const EllipseRows inner(hasInner ? width - 2 * penSize : 0, hasInner ? box.Height() - 2 * penSize : 0);
  for (int y = std::max(box.top, clip.top), end = std::min(box.bottom, clip.bottom); y < end; ++y) {
    const int j = y - box.top;
    const int inset = outer.Inset(j);
    if (inset * 2 >= width) continue;
    ShapeRow row = {y, box.left + inset, box.left + inset, box.right - inset, box.right - inset};
    if (penSize > 0) {
      // The outline never breaks: it holds each pixel that has a neighbour outside.
      int innerInset = std::max(inset + 1, std::max(outer.Inset(j - 1), outer.Inset(j + 1)));
      if (penSize > 1) {
        const int ring = j >= penSize ? inner.Inset(j - penSize) : width;
        innerInset = std::max(innerInset, hasInner ? penSize + ring : width);
      }
      row.innerLeft = std::min(box.left + innerInset, row.right);
      row.innerRight = std::max(box.right - innerInset, row.left);
      if (row.innerLeft >= row.innerRight) row.innerLeft = row.innerRight = row.right;
    }
    sink(row);
  }
}

void RasteriseRectangle(const Rect& box, int penSize, const Rect& clip, const RowSink& sink) {
  if (box.IsEmpty()) return;
  const Rect inner = {box.left + penSize, box.top + penSize, box.right - penSize, box.bottom - penSize};
  for (int y = std::max(box.top, clip.top), end = std::min(box.bottom, clip.bottom); y < end; ++y) {
    ShapeRow row = {y, box.left, inner.left, inner.right, box.right};
    if (inner.IsEmpty() || y < inner.top || y >= inner.bottom) row.innerLeft = row.innerRight = box.right;
    sink(row);
  }
}

void RasterisePolygon(std::span<const Point> points, const Rect& clip, const SpanSink& sink) {
  struct Edge {
    int top;
    int bottom;
    int64_t x;  // at the top
    int64_t run;
    int64_t rise;  // above 0
  };
  std::vector<Edge> edges;
  edges.reserve(points.size());
  for (size_t i = 0; i < points.size(); ++i) {
    Point a = points[i];
    Point b = points[i + 1 == points.size() ? 0 : i + 1];
    if (a.y == b.y) continue;
    if (a.y > b.y) std::swap(a, b);
    if (b.y <= clip.top || a.y >= clip.bottom) continue;
    edges.push_back({a.y, b.y, a.x, int64_t{b.x} - a.x, int64_t{b.y} - a.y});
  }
  std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.top < b.top; });
  std::vector<const Edge*> active;
  std::vector<int64_t> crossings;
  size_t next = 0;
  for (int y = clip.top; y < clip.bottom; ++y) {
    while (next < edges.size() && edges[next].top <= y) active.push_back(&edges[next++]);
    std::erase_if(active, [y](const Edge* e) { return e->bottom <= y; });
    if (active.empty()) {
      if (next == edges.size()) return;
      continue;
    }
    crossings.clear();
    for (const Edge* e : active) crossings.push_back(e->x + CeilDivide((y - e->top) * e->run, e->rise));
    std::sort(crossings.begin(), crossings.end());
    for (size_t i = 0; i + 1 < crossings.size(); i += 2) {
      const int64_t first = std::max<int64_t>(crossings[i], clip.left);
      const int64_t last = std::min<int64_t>(crossings[i + 1], clip.right);
      if (first < last) sink(y, int(first), int(last));
    }
  }
}

void RasteriseThickLine(Point from, Point to, int size, const Rect& clip, const SpanSink& sink) {
  // The pen's centre lies on a pixel's centre for odd sizes and between two for even ones.
  const double lean = size % 2 == 0 ? 0.5 : 0;
  const double radius = size / 2.0;
  const double ax = from.x - lean;
  const double ay = from.y - lean;
  const double bx = to.x - lean;
  const double by = to.y - lean;
  const double length = std::sqrt((bx - ax) * (bx - ax) + (by - ay) * (by - ay));
  const double nx = length > 0 ? (by - ay) / length * radius : 0;
  const double ny = length > 0 ? (ax - bx) / length * radius : 0;
  const double cornersX[4] = {ax + nx, bx + nx, bx - nx, ax - nx};
  const double cornersY[4] = {ay + ny, by + ny, by - ny, ay - ny};
  const double margin = 1e-9;  // exact borders must not depend on rounding
  const int top = std::max(clip.top, int(std::ceil(std::min(ay, by) - radius - margin)));
  const int bottom = std::min(clip.bottom - 1, int(std::floor(std::max(ay, by) + radius + margin)));
  for (int y = top; y <= bottom; ++y) {
    double low = INFINITY;
    double high = -INFINITY;
    const auto add = [&](double x) {
      low = std::min(low, x);
      high = std::max(high, x);
    };
    const auto addCap = [&](double x, double centreY) {
      const double rest = radius * radius - (y - centreY) * (y - centreY);
      if (rest < 0) return;
      add(x - std::sqrt(rest));
      add(x + std::sqrt(rest));
    };
    addCap(ax, ay);
    addCap(bx, by);
    for (int i = 0; i < 4; ++i) {
      const double y1 = cornersY[i];
      const double y2 = cornersY[(i + 1) & 3];
      if (y1 == y2 || y < std::min(y1, y2) || y > std::max(y1, y2)) continue;
      add(cornersX[i] + (y - y1) / (y2 - y1) * (cornersX[(i + 1) & 3] - cornersX[i]));
    }
    if (low > high || low > clip.right || high < clip.left) continue;
    const int first = std::max(clip.left, int(std::ceil(low - margin)));
    const int last = std::min(clip.right, int(std::floor(high + margin)) + 1);
    if (first < last) sink(y, first, last);
  }
}

bool ClipLine(Point& from, Point& to, const Rect& bounds) {
  enum { kBelow = 1, kAbove = 2, kRight = 4, kLeft = 8 };
  const auto codeOf = [&bounds](const Point& p) {
    int code = 0;
    if (p.y > bounds.bottom) code |= kBelow;
    if (p.y < bounds.top) code |= kAbove;
    if (p.x > bounds.right) code |= kRight;
    if (p.x < bounds.left) code |= kLeft;
    return code;
  };
  const auto along = [](int start, int64_t part, int64_t whole, int64_t length) {
    return int(start + part * length / whole);
  };
  // A move sets one coordinate right for good, so few are needed.
  for (int moves = 0; moves < 16; ++moves) {
    const int code1 = codeOf(from);
    const int code2 = codeOf(to);
    if ((code1 | code2) == 0) return true;
    if ((code1 & code2) != 0) return false;
    Point& p = code1 != 0 ? from : to;
    const int code = code1 != 0 ? code1 : code2;
    const int64_t dx = int64_t{to.x} - from.x;
    const int64_t dy = int64_t{to.y} - from.y;
    if (code & (kBelow | kAbove)) {
      const int y = code & kBelow ? bounds.bottom : bounds.top;
      p = {along(from.x, int64_t{y} - from.y, dy, dx), y};
    } else {
      const int x = code & kRight ? bounds.right : bounds.left;
      p = {x, along(from.y, int64_t{x} - from.x, dx, dy)};
    }
  }
  return false;
}

}  // namespace vl
