#pragma once
// The classes that the library offers to the host.

class ClassDesc;

/// Number of classes in the list handed to the host.
inline constexpr int kNumLibraryClasses = 17;

/// The descriptor of class `i`; null outside 0..16. The order is part of the contract with saved scenes. Descriptors
/// are made on the first request and live as long as the library; the descriptor of a class that this version does not
/// have creates nothing and logs so.
ClassDesc* GetLibraryClass(int i);
