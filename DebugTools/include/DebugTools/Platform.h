// The platform layer: the few services of the operating system that this library uses, with one realisation for POSIX
// systems and one for Windows. Everything lives in namespace diag.
#pragma once

#include "DebugTools/platform/Fault.h"
#include "DebugTools/platform/File.h"
#include "DebugTools/platform/Ini.h"
#include "DebugTools/platform/System.h"
#include "DebugTools/platform/Thread.h"
