#pragma once

#include <optional>

class Bundle;
class UserDefaults;
struct OutputSize;

/// Settings that a run was given on its command line; what is absent keeps its stored value.
struct ScanSettings {
    std::optional<double> quality; ///< 0 to 1
    std::optional<int> scaleIndex; ///< 0 to 3: 1, 0.75, 0.5, 0.25
    std::optional<int> longSide;   ///< pixels; this or the short side switches fixed size on
    std::optional<int> shortSide;
    std::optional<bool> albums; ///< one album per event
    std::optional<bool> tag;
    std::optional<bool> trash;
    std::optional<bool> originals; ///< convert the originals, not what is displayed

    /// Lays them over the stored settings for this run; nothing of it is stored. The output size
    /// is always laid over, as it stands when none is given: the output-size control, which is
    /// touched in every run, would store it otherwise. Of a fixed size only the given sides are
    /// locked.
    void applyTo(UserDefaults& defaults) const;
};

/// Gives the settings the fallbacks that the program ships, as the controller does.
void registerFallbacks(UserDefaults& defaults, const Bundle& bundle);

/// The output size that a scan with these settings takes.
[[nodiscard]] OutputSize outputSize(const UserDefaults& defaults);

/// Index of the output-size cell that the settings hold, 0 for any value that is none.
[[nodiscard]] int outputSizeIndex(const UserDefaults& defaults);

/// The index of the cell for a fixed size.
inline constexpr int kFixedSizeIndex = 4;
