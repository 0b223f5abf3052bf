// CArray: stands in for the platform's growing array of the same name, over std::vector.
#pragma once

#include "platform/export.h"

#include <cstddef>
#include <vector>

/// An array of values that owns them. A place outside the array throws std::out_of_range.
template <typename TYPE, typename ARG_TYPE = const TYPE&>
class TYMPAN_API CArray {
  public:
    /// @{
    /// How many values there are.
    std::ptrdiff_t GetSize() const noexcept { return std::ssize(values_); }
    std::ptrdiff_t GetCount() const noexcept { return GetSize(); }
    /// @}
    /// Whether there is no value.
    bool IsEmpty() const noexcept { return values_.empty(); }

    /// Appends a copy of the value. \return its place. \throws std::bad_alloc, std::length_error.
    std::ptrdiff_t Add(ARG_TYPE value)
    {
        values_.push_back(value);
        return GetSize() - 1;
    }

    /// @{
    /// The value at a place, from 0; it holds until the array is added to, emptied or destroyed.
    /// \throws std::out_of_range.
    const TYPE& GetAt(std::ptrdiff_t place) const { return values_.at(Index(place)); }
    TYPE& GetAt(std::ptrdiff_t place) { return values_.at(Index(place)); }
    const TYPE& operator[](std::ptrdiff_t place) const { return GetAt(place); }
    TYPE& operator[](std::ptrdiff_t place) { return GetAt(place); }
    /// @}

    /// Removes all values and gives their memory back.
    void RemoveAll() noexcept { std::vector<TYPE>().swap(values_); }

    /// @{
    /// The values in their order, for a loop over all of them.
    auto begin() const noexcept { return values_.begin(); }
    auto end() const noexcept { return values_.end(); }
    /// @}

  private:
    // A place below 0 becomes one that no array reaches.
    static std::size_t Index(std::ptrdiff_t place) noexcept
    {
        return static_cast<std::size_t>(place);
    }

    std::vector<TYPE> values_;
};
