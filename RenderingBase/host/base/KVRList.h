#pragma once

/// @file  The lists that the framework's operations take and fill. Positions count from 1.

#include "RenderingBase/host/base/KVRFatalError.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <algorithm>
#include <utility>
#include <vector>

/// An ordered list of values; the first one stands at position 1.
///
/// A list of plain pointers neither counts nor deletes what they point to.
/// Threads: const members may be called at once.
template <class T>
class KVRList {
public:
    int Size() const { return static_cast<int>(m_items.size()); }

    /// The value at a position from 1 to Size(); any other position is a fatal error.
    T& operator[](int position) { return m_items[checkedIndex(position)]; }
    const T& operator[](int position) const { return m_items[checkedIndex(position)]; }

    void Append(T item) { m_items.push_back(std::move(item)); }

    /// Returns the position of the first equal value, 0 for none.
    int Locate(const T& item) const {
        const auto found = std::find(m_items.begin(), m_items.end(), item);
        return found == m_items.end() ? 0 : static_cast<int>(found - m_items.begin()) + 1;
    }

    /// Takes a value out; a position outside the list changes nothing.
    void RemovePosition(int position) {
        if (contains(position)) m_items.erase(m_items.begin() + (position - 1));
    }

    void RemoveAll() { m_items.clear(); }

    auto begin() { return m_items.begin(); }
    auto end() { return m_items.end(); }
    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

private:
    bool contains(int position) const { return position >= 1 && position <= Size(); }

    std::size_t checkedIndex(int position) const {
        if (!contains(position)) {
            KVRFatalErrorSimple("position outside the list", __FILE__, __LINE__);
        }
        return static_cast<std::size_t>(position) - 1;
    }

    std::vector<T> m_items;
};

using KVRListValKVRUnicodeString = KVRList<KVRUnicodeString>;
