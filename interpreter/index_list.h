// CIndexList: the interpreter's list, addressed by node index.
//
// Index 0 means none, so the first node of the array is never used. The cursor step reads `next` before the
// caller acts: the node that was just returned may be removed during a walk. Objects that stay in a list keep
// their node index as a handle. Data is never null. Nodes are pooled and never given back while the list lives.
#pragma once

#include <cstdint>
#include <vector>

namespace vl {

template <typename T>
class CIndexList {
 public:
  uint32_t Append(T* data) {
    const uint32_t node = Take(data);
    nodes_[node].prev = last_;
    nodes_[node].next = 0;
    (last_ ? nodes_[last_].next : first_) = node;
    last_ = node;
    return node;
  }
  uint32_t Prepend(T* data) {
    const uint32_t node = Take(data);
    nodes_[node].prev = 0;
    nodes_[node].next = first_;
    (first_ ? nodes_[first_].prev : last_) = node;
    first_ = node;
    return node;
  }
  void Remove(uint32_t node) {
    if (node == 0 || node >= nodes_.size() || !nodes_[node].data) return;
    Node& n = nodes_[node];
    (n.prev ? nodes_[n.prev].next : first_) = n.next;
    (n.next ? nodes_[n.next].prev : last_) = n.prev;
    n.data = nullptr;
    // `next` stays readable for a walk that stands on this node; the free chain runs through `prev`.
    n.prev = free_;
    free_ = node;
    --count_;
  }
  uint32_t Find(const T* data) const {
    for (uint32_t n = first_; n; n = nodes_[n].next) {
      if (nodes_[n].data == data) return n;
    }
    return 0;
  }
  uint32_t First() const { return first_; }
  uint32_t Last() const { return last_; }
  // The data under the cursor, which moves on; null at the end. Nodes that were removed behind the walker's
  // back are passed over: they keep their `next` until they are used again.
  T* Step(uint32_t& cursor) const {
    while (cursor != 0 && cursor < nodes_.size()) {
      const Node& n = nodes_[cursor];
      cursor = n.next;
      if (n.data) return n.data;
    }
    return nullptr;
  }
  T* At(uint32_t node) const { return node < nodes_.size() ? nodes_[node].data : nullptr; }
  uint32_t Count() const { return count_; }
  void Clear() {
    nodes_.clear();
    first_ = last_ = free_ = count_ = 0;
  }

 private:
  struct Node {
    uint32_t prev = 0;
    uint32_t next = 0;
    T* data = nullptr;  // null: not in use
  };
  uint32_t Take(T* data) {
    if (nodes_.empty()) nodes_.resize(1);
    uint32_t node = free_;
    if (node) {
      free_ = nodes_[node].prev;
    } else {
      node = static_cast<uint32_t>(nodes_.size());
      nodes_.emplace_back();
    }
    nodes_[node].data = data;
    ++count_;
    return node;
  }

  std::vector<Node> nodes_;
  uint32_t first_ = 0;
  uint32_t last_ = 0;
  uint32_t free_ = 0;
  uint32_t count_ = 0;
};

}  // namespace vl
