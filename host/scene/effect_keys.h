#pragma once
// The key table's part about render effects and image filters.

#include "scene/key_table.h"

namespace host::keys {

using enum KeyType;

inline constexpr SceneKey kEffect[] = {
    {"class", kText, "", "",
     "class name of the effect: blur, brightness_contrast, color_balance, depth_fog, or a plug-in's"},
    {"name", kText, "\"\"", "", "its name, for [[keys]] and command lines"},
    {"active", kFlag, "true", "", "whether it works"},
    {"set", kParameters, "", "", "parameters of the effect by their own names"},
};

inline constexpr SceneKey kImageFilter[] = {
    {"class", kText, "", "", "class name of the filter: negative, or a plug-in's"},
    {"active", kFlag, "true", "", "whether it works"},
    {"config", kIntegers, "", "", "the filter's configuration as whole numbers of 32 bits; negative: its percentage"},
};

} // namespace host::keys
