#include "classes/point_array.h"

#include <algorithm>

#include "classes/core_classes.h"
#include "interpreter/interpretor.h"

namespace vl {

void CIPointArray::Construct() {
  if (!interpreter.IsArgDefault(0)) dimensions_ = interpreter.GetArgInt(0);
  if (dimensions_ < 1) interpreter.RaiseError(ERR_OUT_OF_RANGE);
  const std::vector<float> values = Values(1);
  Resize(values.size());
  std::copy(values.begin(), values.end(), points_.begin());
  Create();
}

void CIPointArray::Destroy(bool final) {
  Resize(0);
  CIBaseClassImpl::Destroy(final);
}

void CIPointArray::Resize(size_t floats) {
  const uint64_t now = points_.capacity() * sizeof(float);
  if (floats == 0) {
    std::vector<float>().swap(points_);
    interpreter.budget.Return(now);
    return;
  }
  if (floats > points_.capacity()) {
    // By half at least: points that are added one by one don't copy the table each time.
    const size_t grown = std::max(floats, points_.capacity() + points_.capacity() / 2);
    if (!interpreter.budget.Take(grown * sizeof(float))) interpreter.RaiseError(ERR_MEMORY);
    interpreter.budget.Return(now);
    points_.reserve(grown);
  }
  points_.resize(floats);
}

std::vector<float> CIPointArray::Values(int first) {
  std::vector<float> values;
  for (int i = first; i < interpreter.GetArgCount(); ++i) {
    if (interpreter.IsArgDefault(i)) interpreter.RaiseError(ERR_OBJECT_MISSING);
    values.push_back(static_cast<float>(interpreter.GetArgDouble(i)));
  }
  if (values.size() % static_cast<size_t>(dimensions_)) interpreter.RaiseError(ERR_POINT_VALUES);
  return values;
}

int32_t CIPointArray::Index(int32_t last) {
  const int32_t index = interpreter.GetArgInt(0);
  if (index < 0 || index > last) interpreter.RaiseError(ERR_OUT_OF_RANGE);
  return index;
}

void CIPointArray::AddPoint() {
  const std::vector<float> values = Values(0);
  const size_t old = points_.size();
  Resize(old + values.size());
  std::copy(values.begin(), values.end(), points_.begin() + static_cast<ptrdiff_t>(old));
}

void CIPointArray::InsertPoint() {
  const ptrdiff_t at = ptrdiff_t{Index(Count())} * dimensions_;
  const std::vector<float> values = Values(1);
  if (values.empty()) interpreter.RaiseError(ERR_POINT_VALUES);
  const auto old = static_cast<ptrdiff_t>(points_.size());
  Resize(points_.size() + values.size());
  std::copy_backward(points_.begin() + at, points_.begin() + old, points_.end());
  std::copy(values.begin(), values.end(), points_.begin() + at);
}

void CIPointArray::DeletePoint() {
  if (interpreter.GetArgCount() == 0) {
    Resize(0);
    return;
  }
  const auto from = points_.begin() + ptrdiff_t{Index(Count() - 1)} * dimensions_;
  points_.erase(from, from + dimensions_);
}

void CIPointArray::SetPoint() {
  const ptrdiff_t at = ptrdiff_t{Index(Count())} * dimensions_;
  const std::vector<float> values = Values(1);
  if (values.empty()) interpreter.RaiseError(ERR_POINT_VALUES);
  Resize(std::max(points_.size(), static_cast<size_t>(at) + values.size()));
  std::copy(values.begin(), values.end(), points_.begin() + at);
}

void CIPointArray::GetNPoints() { interpreter.GetResult().SetInt(Count()); }

void CIPointArray::GetCoord() {
  const int32_t index = Index(Count() - 1);
  const int32_t axis = interpreter.GetArgInt(1);
  if (axis < 0 || axis >= dimensions_) interpreter.RaiseError(ERR_OUT_OF_RANGE);
  interpreter.GetResult().SetFloat(static_cast<double>(
      points_[static_cast<size_t>(index) * static_cast<size_t>(dimensions_) + static_cast<size_t>(axis)]));
}

namespace {

constexpr MemberRow kRows[] = {
    Row(1, "AddPoint", kMember<&CIPointArray::AddPoint>, "AddPoint(values...): one or more points at the end"),
    Row(2, "InsertPoint", kMember<&CIPointArray::InsertPoint>, "InsertPoint(index, values...): before that point"),
    Row(3, "DeletePoint", kMember<&CIPointArray::DeletePoint>, "DeletePoint(index): without an index, all of them"),
    Row(4, "GetNPoints", kMember<&CIPointArray::GetNPoints>, "GetNPoints(): number of points"),
    Row(5, "GetCoord", kMember<&CIPointArray::GetCoord>, "GetCoord(index, axis): a float"),
    Row(6, "SetPoint", kMember<&CIPointArray::SetPoint>, "SetPoint(index, values...): overwrites from that point on"),
};

}  // namespace

const ClassTable kPointArrayClass = {CLASS_POINTARRAY, kRows, &CreateObject<CIPointArray>,
                                     "Points of some floats each: New PointArray(dimensions, values...)"};

}  // namespace vl
