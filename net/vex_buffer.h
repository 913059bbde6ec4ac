// The byte stores of the network layer: VexBuffer for what arrived, VexQueue for what is to leave, VexIdList.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vl {

// Bytes in order. Values are little-endian; reading beyond the end gives 0.
class VexBuffer {
 public:
  size_t Size() const { return end_ - first_; }
  bool IsEmpty() const { return end_ == first_; }
  std::span<const uint8_t> Bytes() const { return {store_.data() + first_, Size()}; }

  void Append(std::span<const uint8_t> bytes) {
    std::copy(bytes.begin(), bytes.end(), Room(bytes.size()).begin());
    Grow(bytes.size());
  }
  // Room behind the end, to be filled; what Grow then says of it belongs to the bytes.
  std::span<uint8_t> Room(size_t size) {
    if (store_.size() - end_ < size) MakeRoom(size);
    return std::span(store_).subspan(end_, size);
  }
  void Grow(size_t size) { end_ += size; }
  void AppendU8(uint8_t v) { AppendLittle(v, 1); }
  void AppendU16(uint16_t v) { AppendLittle(v, 2); }
  void AppendU32(uint32_t v) { AppendLittle(v, 4); }
  // Without a terminator.
  void AppendText(std::string_view text) { Append({reinterpret_cast<const uint8_t*>(text.data()), text.size()}); }
  uint8_t ReadU8(size_t at) const { return static_cast<uint8_t>(ReadLittle(at, 1)); }
  uint16_t ReadU16(size_t at) const { return static_cast<uint16_t>(ReadLittle(at, 2)); }
  uint32_t ReadU32(size_t at) const { return ReadLittle(at, 4); }
  // What there is of the range, with a NUL behind it.
  std::vector<char> CopyOut(size_t at, size_t size) const;
  void Erase(size_t at, size_t size);

 private:
  void AppendLittle(uint32_t v, size_t bytes) {
    const auto room = Room(bytes);
    for (size_t i = 0; i < bytes; ++i) room[i] = static_cast<uint8_t>(v >> 8 * i);
    Grow(bytes);
  }
  uint32_t ReadLittle(size_t at, size_t bytes) const;
  void MakeRoom(size_t size);

  std::vector<uint8_t> store_;
  size_t first_ = 0;  // the bytes lie from here
  size_t end_ = 0;    // to here
};

// Messages that wait to be sent, one behind the other, so that many leave in one send.
class VexQueue {
 public:
  bool IsEmpty() const { return bytes_.IsEmpty(); }
  size_t Size() const { return bytes_.Size(); }
  std::span<const uint8_t> Waiting() const { return bytes_.Bytes(); }
  void Add(std::span<const uint8_t> message) {
    bytes_.Append(message);
    ends_.push_back(added_ += message.size());
  }
  // `count` bytes went. Calls part(size) for each message, or part of one, that they were.
  template <typename F>
  void Drop(size_t count, F&& part) {
    bytes_.Erase(0, count);
    const uint64_t until = dropped_ + count;
    while (dropped_ < until) {
      const uint64_t end = ends_[firstEnd_];
      const uint64_t next = end < until ? end : until;
      part(static_cast<size_t>(next - dropped_));
      dropped_ = next;
      if (next == end) ++firstEnd_;
    }
    if (firstEnd_ == ends_.size()) {
      ends_.clear();
      firstEnd_ = 0;
    } else if (firstEnd_ > 4096) {
      ends_.erase(ends_.begin(), ends_.begin() + static_cast<ptrdiff_t>(firstEnd_));
      firstEnd_ = 0;
    }
  }

 private:
  VexBuffer bytes_;
  std::vector<uint64_t> ends_;  // of each message, counted from the first byte ever added
  size_t firstEnd_ = 0;
  uint64_t added_ = 0;
  uint64_t dropped_ = 0;
};

// Objects by id, in the order in which they were added. It owns nothing.
template <typename T>
class VexIdList {
 public:
  // False when the id is there already.
  bool Add(T* object, uint32_t id) {
    if (Find(id)) return false;
    entries_.push_back({object, id});
    return true;
  }
  T* Find(uint32_t id) const {
    for (const Entry& entry : entries_) {
      if (entry.id == id) return entry.object;
    }
    return nullptr;
  }
  // Null beyond either end.
  T* At(int64_t index) const {
    return index >= 0 && index < static_cast<int64_t>(entries_.size()) ? entries_[static_cast<size_t>(index)].object
                                                                       : nullptr;
  }
  bool Remove(uint32_t id) {
    return std::erase_if(entries_, [&](const Entry& entry) { return entry.id == id; }) != 0;
  }
  size_t Count() const { return entries_.size(); }

 private:
  struct Entry {
    T* object;
    uint32_t id;
  };
  std::vector<Entry> entries_;
};

}  // namespace vl
