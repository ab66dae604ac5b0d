#include "scene/scene_docs.h"

#include "scene/section_reader.h"

namespace host {

namespace {

constexpr const char* kIntroduction =
    R"(# The scene description

This page is made from the program's key table by `velmar docs --scene`.

A scene is one TOML file. Paths are relative to it. The smallest useful one:

```toml
[scene]
import = ["horse.3ds"]
search = ["/usr/share/glmark2/models"]

[[camera]]
name = "cam"
position = [2.0, -3.0, 1.5]
target = [0.0, 0.0, 0.0]

[[light]]
name = "key"
position = [3.0, -4.0, 6.0]

[[fur]]
name = "coat"
emitters = ["horse"]
[fur.set]
pid_length = 0.08
pid_densPerArea = 60000.0
```

Characters outside ASCII may stand in texts and comments only. Unknown keys and values of another type are errors that
name the file, the line and what was expected. Lengths are scene units, Z points up, colours are linear.
A key without a default may be left out; what it would set then keeps its own default.
)";

// Text for a cell of a Markdown table.
void AppendCell(std::string_view text, const char* quote, std::string& out) {
    out.append(" ").append(quote);
    for (const char c : text) {
        if (c == '|') out.push_back('\\');
        out.push_back(c);
    }
    out.append(quote).append(" |");
}

void AppendSection(const SceneSection& section, std::string& out) {
    out.append("\n## ").append(section.title).append("\n\n").append(section.text).append("\n\n");
    out.append("| key | value | default | unit | meaning |\n|---|---|---|---|---|\n");
    for (const SceneKey& key : section.keys) {
        out.append("|");
        AppendCell(key.name, "`", out);
        AppendCell(ExpectedText(key), "", out);
        AppendCell(key.defaultText, *key.defaultText ? "`" : "", out);
        AppendCell(key.unit, "", out);
        AppendCell(key.text, "", out);
        out.append("\n");
    }
}

} // namespace

std::string SceneReference() {
    std::string out(kIntroduction);
    for (const SceneSection& section : SceneSections()) AppendSection(section, out);
    return out;
}

} // namespace host
