#pragma once
// The glTF library as it is used here: no pictures are decoded, no file is opened but through callbacks.

#define TINYGLTF_NO_STB_IMAGE
#define TINYGLTF_NO_STB_IMAGE_WRITE
#define TINYGLTF_NO_EXTERNAL_IMAGE
#define TINYGLTF_NO_FS
#include <tiny_gltf.h>
