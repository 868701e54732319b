#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>

/// A list that keeps the first of its entries and counts the others.
template <class Entry, std::size_t limit>
class BoundedList {
public:
    void add(Entry entry) {
        if (entries_.size() < limit) {
            entries_.push_back(std::move(entry));
        } else {
            ++omitted_;
        }
    }
    void omit() { ++omitted_; }

    /// Calls @p visit with each entry that is kept.
    template <class Visit>
    void forEach(Visit visit) const {
        std::for_each(entries_.begin(), entries_.end(), visit);
    }
    std::uint64_t omitted() const { return omitted_; }

private:
    // A deque grows without a second copy of itself, as a vector would need for a while.
    std::deque<Entry> entries_;
    std::uint64_t omitted_ = 0;
};
