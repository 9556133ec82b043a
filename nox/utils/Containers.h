// Standard containers whose memory comes from the library allocator.
#pragma once

#include <nox/allocator/StdAllocator.h>

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <vector>

namespace nox::utils {

template <class T>
using Vector = std::vector<T, nox::allocator::StdAllocator<T>>;

template <class T>
using Deque = std::deque<T, nox::allocator::StdAllocator<T>>;

template <class Key, class Value, class Compare = std::less<Key>>
using Map = std::map<Key, Value, Compare, nox::allocator::StdAllocator<std::pair<const Key, Value>>>;

template <class Key, class Compare = std::less<Key>>
using Set = std::set<Key, Compare, nox::allocator::StdAllocator<Key>>;

}  // namespace nox::utils
