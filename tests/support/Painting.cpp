#include "tests/support/Painting.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace ZkMobileBackup {
namespace {

constexpr int kDigitColumns = 3;
constexpr int kDigitRows = 5;

/// Rows of three dots each, from the top.
constexpr std::array<std::string_view, 10> kDigits = {
    "####.##.##.####",  // 0
    ".#.##..#..#.###",  // 1
    "###..#####..###",  // 2
    "###..####..####",  // 3
    "#.##.####..#..#",  // 4
    "####..###..####",  // 5
    "####..####.####",  // 6
    "###..#..#..#..#",  // 7
    "####.#####.####",  // 8
    "####.####..####",  // 9
};

/// How far a pixel of a detailed picture is from its plain colour, from 0 to 55.
int detail(int x, int y) {
    auto mixed = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U;
    mixed ^= mixed >> 15;
    mixed *= 0x2C1B3C6DU;
    const auto grain = static_cast<int>(mixed >> 27);
    return grain + ((x / 16 + y / 24) % 4) * 8;
}

/// Where a stored pixel comes from in the upright picture.
std::pair<int, int> uprightPosition(const Canvas& upright, int orientation, int x, int y) {
    const int right = upright.width - 1;
    const int bottom = upright.height - 1;
    switch (orientation) {
        case 1:
            return {x, y};
        case 2:
            return {right - x, y};
        case 3:
            return {right - x, bottom - y};
        case 4:
            return {x, bottom - y};
        case 5:
            return {y, x};
        case 6:
            return {right - y, x};
        case 7:
            return {right - y, bottom - x};
        case 8:
            return {y, bottom - x};
        default:
            throw std::invalid_argument("no such orientation");
    }
}

}  // namespace

Canvas::Canvas(int columns, int rows)
    : width(columns), height(rows), rgb(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows) * 3) {}

std::size_t Canvas::offset(int x, int y) const {
    return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 3;
}

Canvas::Colour Canvas::at(int x, int y) const {
    const std::size_t first = offset(x, y);
    return {rgb.at(first), rgb.at(first + 1), rgb.at(first + 2)};
}

void Canvas::set(int x, int y, const Colour& colour) {
    std::ranges::copy(colour, rgb.begin() + static_cast<std::ptrdiff_t>(offset(x, y)));
}

void Canvas::fill(int left, int top, int columns, int rows, const Colour& colour) {
    for (int y = std::max(top, 0); y < std::min(top + rows, height); ++y) {
        for (int x = std::max(left, 0); x < std::min(left + columns, width); ++x) set(x, y, colour);
    }
}

Canvas quadrants(int width, int height) {
    Canvas picture(width, height);
    picture.fill(0, 0, width, height, colours::kYellow);
    picture.fill(0, height / 2, width / 2, height, colours::kBlue);
    picture.fill(0, 0, width, height / 2, colours::kGreen);
    picture.fill(0, 0, width / 2, height / 2, colours::kRed);
    return picture;
}

Canvas numberedQuadrants(int width, int height, int digit) {
    Canvas picture = quadrants(width, height);
    const int dot = std::max(std::min(width, height) / 10, 1);
    const int left = (width - kDigitColumns * dot) / 2;
    const int top = (height - kDigitRows * dot) / 2;
    const std::string_view dots = kDigits.at(static_cast<std::size_t>(digit));
    for (int index = 0; index < kDigitColumns * kDigitRows; ++index) {
        if (dots.at(static_cast<std::size_t>(index)) != '#') continue;
        picture.fill(left + index % kDigitColumns * dot, top + index / kDigitColumns * dot, dot, dot, colours::kWhite);
    }
    return picture;
}

Canvas detailedQuadrants(int width, int height) {
    Canvas picture = quadrants(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Canvas::Colour colour = picture.at(x, y);
            const int difference = detail(x, y);
            for (std::uint8_t& part : colour) {
                part = static_cast<std::uint8_t>(part == 0 ? difference : part - difference);
            }
            picture.set(x, y, colour);
        }
    }
    return picture;
}

Canvas storedWithOrientation(const Canvas& upright, int orientation) {
    const bool turned = orientation >= 5;
    Canvas stored(turned ? upright.height : upright.width, turned ? upright.width : upright.height);
    for (int y = 0; y < stored.height; ++y) {
        for (int x = 0; x < stored.width; ++x) {
            const auto [column, row] = uprightPosition(upright, orientation, x, y);
            stored.set(x, y, upright.at(column, row));
        }
    }
    return stored;
}

}  // namespace ZkMobileBackup
