// A bounded view of octets: a pointer and a count. Every get either succeeds
// and advances, or fails and leaves the view as it was, so no read can pass
// the end of what the view was given.
#pragma once

#include <cstdint>

class OctetView {
public:
    constexpr OctetView() = default;
    constexpr OctetView(const uint8_t* data, int32_t size) : data_(data), size_(data != nullptr && size > 0 ? size : 0) {}

    constexpr const uint8_t* data() const { return data_; }
    constexpr int32_t size() const { return size_; }
    constexpr bool empty() const { return size_ == 0; }
    constexpr const uint8_t* end() const { return data_ + size_; }

    // The octet at `index`, which the caller has checked to lie in the view.
    constexpr uint8_t at(int32_t index) const { return data_[index]; }
    // How many octets from the start equal `octet`.
    constexpr int32_t spanOf(uint8_t octet) const
    {
        int32_t count = 0;
        while (count < size_ && data_[count] == octet) ++count;
        return count;
    }

    // The first octet, if there is one.
    constexpr bool peek(uint8_t& octet) const
    {
        if (size_ == 0) return false;
        octet = data_[0];
        return true;
    }
    // Whether the view starts with two zero octets: an end-of-contents.
    constexpr bool startsWithEndOfContents() const { return size_ >= 2 && data_[0] == 0 && data_[1] == 0; }

    constexpr bool getOctet(uint8_t& octet)
    {
        if (!peek(octet)) return false;
        ++data_;
        --size_;
        return true;
    }
    constexpr bool skip(int32_t count)
    {
        if (count < 0 || count > size_) return false;
        data_ += count;
        size_ -= count;
        return true;
    }
    // Takes `count` octets off the front into `part`.
    constexpr bool getOctets(int32_t count, OctetView& part)
    {
        if (count < 0 || count > size_) return false;
        part = OctetView(data_, count);
        data_ += count;
        size_ -= count;
        return true;
    }
    // The first `count` octets, or all there are.
    constexpr OctetView first(int32_t count) const { return OctetView(data_, count < size_ ? count : size_); }
    // What follows the first `count` octets, or nothing.
    constexpr OctetView from(int32_t count) const
    {
        return count >= size_ ? OctetView(data_ + size_, 0) : OctetView(data_ + (count > 0 ? count : 0), size_ - (count > 0 ? count : 0));
    }

private:
    const uint8_t* data_ = nullptr;
    int32_t size_ = 0;
};
