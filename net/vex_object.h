// VexObject: the base of everything in the network layer; VexList: what one object owns.
//
// Delete ends an object: it takes it out of its owner's list and deletes what it owns. Its memory stays until the last
// function that works with it has returned, so that an event's handler may delete anything; each function looks at
// IsDeleted when a handler has run.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace vl {

class VexObject;

// Keeps the memory of an object and of its owners for the length of a function.
class VexKept {
 public:
  explicit VexKept(const VexObject* object);

 private:
  std::array<std::shared_ptr<const VexObject>, 4> kept_;  // a user, its channel, player and node
};

class VexObject : public std::enable_shared_from_this<VexObject> {
 public:
  VexObject() = default;
  virtual ~VexObject() = default;
  VexObject(const VexObject&) = delete;
  VexObject& operator=(const VexObject&) = delete;

  void Delete() {
    if (isDeleted_) return;
    isDeleted_ = true;
    // With what it works with until its end: the handlers of its end may delete all of it.
    const VexKept kept(this);
    OnDelete();
    if (onDestroy) onDestroy(*this);
  }
  bool IsDeleted() const { return isDeleted_; }

  void* privateData = nullptr;              // the runtime class object that wraps this one
  void (*onDestroy)(VexObject&) = nullptr;  // called last

 protected:
  virtual void OnDelete() = 0;
  // Null: the layer itself.
  virtual const VexObject* Owner() const { return nullptr; }

 private:
  friend class VexKept;
  bool isDeleted_ = false;
};

inline VexKept::VexKept(const VexObject* object) {
  for (auto& kept : kept_) {
    if (!object) return;
    kept = object->weak_from_this().lock();
    object = object->Owner();
  }
}

template <typename T>
class VexList {
 public:
  T* Add(std::shared_ptr<T> object) {
    items_.push_back(std::move(object));
    return items_.back().get();
  }
  // The reference that the list held; null when it held none.
  std::shared_ptr<T> Take(const T* object) {
    const auto at = std::find_if(items_.begin(), items_.end(), [&](const auto& item) { return item.get() == object; });
    if (at == items_.end()) return nullptr;
    std::shared_ptr<T> taken = std::move(*at);
    items_.erase(at);
    return taken;
  }
  size_t Count() const { return items_.size(); }
  // Null beyond either end.
  T* At(int64_t index) const {
    return index >= 0 && index < static_cast<int64_t>(items_.size()) ? items_[static_cast<size_t>(index)].get()
                                                                     : nullptr;
  }
  template <typename P>
  T* Find(P&& matches) const {
    for (const auto& item : items_) {
      if (matches(*item)) return item.get();
    }
    return nullptr;
  }
  // Calls work(T&) for each; it may add and delete. What comes in meanwhile has its turn, too.
  template <typename F>
  void ForEach(F&& work) {
    for (size_t i = 0; i < items_.size();) {
      const std::shared_ptr<T> item = items_[i];
      work(*item);
      if (i < items_.size() && items_[i] == item) {
        ++i;
        continue;
      }
      // Something before it, or it, is gone.
      const auto at = std::find(items_.begin(), items_.end(), item);
      if (at != items_.end()) i = static_cast<size_t>(at - items_.begin()) + 1;
    }
  }
  void DeleteAll() {
    while (!items_.empty()) {
      const std::shared_ptr<T> item = items_.front();
      item->Delete();
      Take(item.get());
    }
  }

 private:
  std::vector<std::shared_ptr<T>> items_;
};

}  // namespace vl
