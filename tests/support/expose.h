#pragma once

namespace support {

/// Lets the tests call a private worker. `Name` is a structure of this namespace with the worker's `Type` and a friend
/// `workerOf(Name)`, which is defined here.
template <class Name, typename Name::Type worker>
struct Expose {
    friend typename Name::Type workerOf(Name) { return worker; }
};

}  // namespace support
