// CIPointArray: the runtime class PointArray, a growing table of points of one or more floats each.
#pragma once

#include <vector>

#include "interpreter/class_base.h"
#include "interpreter/data_source.h"

namespace vl {

class CIPointArray : public CIBaseClassImpl, public CPointSource {
 public:
  explicit CIPointArray(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_POINTARRAY, Listing::Listed) {}
  void Construct() override;
  void Destroy(bool final) override;

  int PointDimensions() const override { return dimensions_; }
  std::span<const float> PointValues() const override { return points_; }

  void AddPoint();
  void InsertPoint();
  void DeletePoint();
  void GetNPoints();
  void GetCoord();
  void SetPoint();

 private:
  int32_t Count() const { return static_cast<int32_t>(points_.size() / static_cast<size_t>(dimensions_)); }
  // The arguments from `first` on: a whole number of points.
  std::vector<float> Values(int first);
  // Argument 0, from 0 to `last`.
  int32_t Index(int32_t last);
  void Resize(size_t floats);

  std::vector<float> points_;
  int32_t dimensions_ = 3;
};

}  // namespace vl
