#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZkMobileBackup {

/// Pixels of a test picture: rows from the top, three bytes a pixel.
struct Canvas {
    using Colour = std::array<std::uint8_t, 3>;

    Canvas(int columns, int rows);
    Colour at(int x, int y) const;
    void set(int x, int y, const Colour& colour);
    /// Paints a rectangle; what lies outside the picture is left out.
    void fill(int left, int top, int columns, int rows, const Colour& colour);

    int width;
    int height;
    std::vector<std::uint8_t> rgb;

private:
    std::size_t offset(int x, int y) const;
};

namespace colours {
constexpr Canvas::Colour kRed{255, 0, 0};
constexpr Canvas::Colour kGreen{0, 255, 0};
constexpr Canvas::Colour kBlue{0, 0, 255};
constexpr Canvas::Colour kYellow{255, 255, 0};
constexpr Canvas::Colour kWhite{255, 255, 255};
constexpr Canvas::Colour kGrey{128, 128, 128};
}  // namespace colours

/// A picture that shows which way up it is, and whether colours or sides were swapped: red top left, green top right,
/// blue bottom left, yellow bottom right.
Canvas quadrants(int width, int height);

/// The same with a white digit in its middle, 0 to 9, some half of the picture high.
Canvas numberedQuadrants(int width, int height, int digit);

/// The same with fine detail all over, as photographs have it, so that it does not compress to nothing. The same
/// pixels at every call.
Canvas detailedQuadrants(int width, int height);

/// Turns and mirrors an upright picture into the pixels that a file with this EXIF orientation, 1 to 8, stores.
Canvas storedWithOrientation(const Canvas& upright, int orientation);

}  // namespace ZkMobileBackup
