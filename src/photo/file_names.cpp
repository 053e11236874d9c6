#include "photo/file_names.h"

#include "support/text_numbers.h"
#include "support/text_search.h"

#include <algorithm>

namespace tvmeta {

namespace {

constexpr std::size_t DcfNameLength = 8;

std::string_view lastPart(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == NotFound ? path : textFrom(path, separator + 1);
}

// The digits at the start of a text, without zeros before them, and their length with these.
struct Digits {
    std::string_view significant;
    std::size_t length;
};

Digits digitsAt(std::string_view text) {
    std::size_t length = 0, zeros = 0;
    while (length < text.size() && isDigit(text[length])) {
        zeros += zeros == length && text[length] == '0' ? 1U : 0U;
        ++length;
    }
    return {{text.data() + zeros, length - zeros}, length};
}

// The first bytes of a text as a number.
class FirstBytes {
  public:
    void add(char c) {
        if (shift_ > 0) {
            shift_ -= 8;
            number_ |= std::uint64_t{static_cast<unsigned char>(c)} << shift_;
        }
    }

    bool isFull() const { return shift_ == 0; }
    std::uint64_t number() const { return number_; }

  private:
    std::uint64_t number_ = 0;
    int shift_ = 64;
};

} // namespace

std::string_view stemOf(std::string_view name) {
    return {name.data(), std::min(name.rfind('.'), name.size())};
}

std::string_view extensionOf(std::string_view name) {
    const std::size_t stop = name.rfind('.');
    return stop == NotFound ? std::string_view() : textFrom(name, stop + 1);
}

std::int32_t fileNumber(std::string_view stem) {
    std::int32_t number = 0, factor = 1;
    std::size_t at = stem.size();
    while (at > 0 && isDigit(stem[at - 1]) && factor < 10000) {
        number += factor * (stem[--at] - '0');
        factor *= 10;
    }
    return at < stem.size() ? number : -1;
}

std::int32_t cardFolderNumber(std::string_view folder) {
    const std::string_view name = lastPart(folder);
    const bool isDcf = name.size() == DcfNameLength && digitsAt(name).length == 3;
    return isDcf ? (name[0] - '0') * 100 + (name[1] - '0') * 10 + (name[2] - '0') : -1;
}

std::string_view cardOf(std::string_view folder) {
    return cardFolderNumber(folder) < 0 ? folder : std::string_view(folder.data(), folder.size() - DcfNameLength);
}

int compareNames(std::string_view a, std::string_view b) {
    std::size_t i = static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
    while (i > 0 && isDigit(a[i - 1])) { // a number is compared as a whole
        --i;
    }
    std::size_t j = i;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            const Digits first = digitsAt(textFrom(a, i)), second = digitsAt(textFrom(b, j));
            if (first.significant.size() != second.significant.size()) {
                return first.significant.size() < second.significant.size() ? -1 : 1;
            }
            if (const int order = first.significant.compare(second.significant); order != 0) {
                return order;
            }
            i += first.length;
            j += second.length;
        } else if (a[i] != b[j]) {
            return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]) ? -1 : 1;
        } else {
            ++i;
            ++j;
        }
    }
    const bool aHasMore = i < a.size(), bHasMore = j < b.size();
    return aHasMore == bHasMore ? a.compare(b) : aHasMore ? 1 : -1;
}

std::uint64_t orderOfBytes(std::string_view text) {
    FirstBytes bytes;
    for (std::size_t i = 0; i < text.size() && !bytes.isFull(); ++i) {
        bytes.add(text[i]);
    }
    return bytes.number();
}

// A number is written as the count of its digits, itself a digit, and the digits: 12 (212) comes before 9000 (49000).
std::uint64_t orderOfName(std::string_view name) {
    constexpr std::size_t MaxDigits = 8;
    FirstBytes bytes;
    for (std::size_t i = 0; i < name.size() && !bytes.isFull();) {
        if (!isDigit(name[i])) {
            bytes.add(name[i++]);
            continue;
        }
        const Digits digits = digitsAt(textFrom(name, i));
        if (digits.significant.size() > MaxDigits) {
            bytes.add('9');
            break;
        }
        bytes.add(static_cast<char>('0' + digits.significant.size()));
        for (const char digit : digits.significant) {
            bytes.add(digit);
        }
        i += digits.length;
    }
    return bytes.number();
}

} // namespace tvmeta
