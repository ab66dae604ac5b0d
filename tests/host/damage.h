#pragma once
// Files that were damaged on the way.

#include <string>

#include <rapidcheck.h>

namespace test {

/// Changes less than `changes` characters of a text into any or into some of `letters`, then may cut it off, take out
/// or repeat a stretch of less than `stretch` characters. To be called in a property.
inline std::string Damage(std::string text, const std::string& letters, int changes, size_t stretch) {
    const int count = *rc::gen::inRange(0, changes);
    for (int i = 0; i < count && !text.empty(); ++i)
        text[*rc::gen::inRange<size_t>(0, text.size())] =
            *rc::gen::oneOf(rc::gen::arbitrary<char>(), rc::gen::elementOf(letters));
    const size_t at = *rc::gen::inRange<size_t>(0, text.size() + 1), length = *rc::gen::inRange<size_t>(0, stretch);
    switch (*rc::gen::inRange(0, 4)) {
    case 0:
        text.resize(at);
        break;
    case 1:
        text.erase(at, length);
        break;
    case 2:
        text.insert(at, text.substr(at, length));
        break;
    default:
        break;
    }
    return text;
}

} // namespace test
