// A chained hash table for integer keys, kept compact for tables that are filled once
// and then read on hot paths (the StringTable). Entries live in one vector in insertion
// order; each bucket holds the index of its first entry, and entries chain to the next
// entry of their bucket. There is no removal, only clear(), so a chain always lists its
// entries in insertion order.
#pragma once

#include <nox/utils/Assertion.h>
#include <nox/utils/Containers.h>

#include <cstddef>
#include <cstdint>

namespace nox::utils {

template <class Key, class Value>
class HashTable {
 public:
  struct Entry {
    Key key;
    std::uint32_t next;  // next entry of the same bucket, or endMark
    Value value;
  };

  static constexpr std::uint32_t endMark = 0xFFFFFFFF;

  // Null when `key` is not registered.
  const Value* find(const Key& key) const {
    const std::uint32_t index = search(key).entry;
    return index == endMark ? nullptr : &entries_[index].value;
  }

  // The value of a key that must be registered (assertion otherwise).
  const Value& at(const Key& key) const {
    if (const Value* value = find(key)) return *value;
    NOX_FAIL("No value registered at " << key);
    static const Value none{};
    return none;
  }

  // Registers a key that is not registered yet; false (and no change) if it is.
  bool insert(const Key& key, const Value& value) {
    if (buckets_.empty()) rebuild();
    const Position position = search(key);
    if (position.entry != endMark) return false;
    const std::uint32_t index = static_cast<std::uint32_t>(entries_.size());
    entries_.push_back(Entry{key, endMark, value});
    link(position, index);
    if (static_cast<double>(entries_.size()) / static_cast<double>(buckets_.size()) >= 0.7) rebuild();
    return true;
  }

  // Empties both vectors; the next insertion builds the buckets anew.
  void clear() {
    entries_.clear();
    buckets_.clear();
  }

  bool empty() const { return entries_.empty(); }
  std::size_t size() const { return entries_.size(); }
  std::size_t bucketCount() const { return buckets_.size(); }
  // Every entry in insertion order.
  const Vector<Entry>& entries() const { return entries_; }

 private:
  // Where a chain walk for a key ended: the key's bucket, the matching entry (or
  // endMark) and the entry visited before it (endMark at the chain head).
  struct Position {
    std::uint32_t bucket;
    std::uint32_t entry;
    std::uint32_t previous;
  };

  Position search(const Key& key) const {
    Position position{endMark, endMark, endMark};
    if (buckets_.empty()) return position;
    position.bucket = bucketOf(static_cast<std::uint64_t>(key));
    for (std::uint32_t index = buckets_[position.bucket]; index != endMark; index = entries_[index].next) {
      if (entries_[index].key == key) {
        position.entry = index;
        return position;
      }
      position.previous = index;
    }
    return position;
  }

  // Appends entry `index` to the chain that a failed search ended on.
  void link(const Position& position, std::uint32_t index) {
    if (position.previous == endMark) {
      buckets_[position.bucket] = index;
    } else {
      entries_[position.previous].next = index;
    }
  }

  // Re-buckets every entry into (entries * 2 + 10) buckets. Pushing entries on the chain
  // heads from the last one back gives the very chains that appending them in
  // insertion order would, without walking any chain.
  void rebuild() {
    buckets_.assign(entries_.size() * 2 + 10, endMark);
    reciprocal_ = ~std::uint64_t{0} / buckets_.size();
    for (std::size_t index = entries_.size(); index-- > 0;) {
      Entry& entry = entries_[index];
      std::uint32_t& head = buckets_[bucketOf(static_cast<std::uint64_t>(entry.key))];
      entry.next = head;
      head = static_cast<std::uint32_t>(index);
    }
  }

  // key % bucketCount() without a division, which would cost more than the rest of a
  // lookup: the quotient estimated from the reciprocal is at most one short.
  std::uint32_t bucketOf(std::uint64_t key) const {
    const std::uint64_t count = buckets_.size();
    const auto quotient = static_cast<std::uint64_t>((static_cast<unsigned __int128>(key) * reciprocal_) >> 64);
    std::uint64_t remainder = key - quotient * count;
    if (remainder >= count) remainder -= count;
    return static_cast<std::uint32_t>(remainder);
  }

  Vector<Entry> entries_;
  Vector<std::uint32_t> buckets_;
  std::uint64_t reciprocal_ = 0;  // floor((2^64 - 1) / bucketCount())
};

}  // namespace nox::utils
