#!/bin/sh
# Writes the generated pages of docs/ anew.
set -eu
cd "$(dirname "$0")/.."
build/release/bin/describe_parameters >docs/parameters.md
build/release/bin/velmar docs --scene >docs/scene.md
