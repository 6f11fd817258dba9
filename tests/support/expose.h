#pragma once

namespace support {

/// Lets the tests call a private worker. `Name` is a structure of this namespace with the worker's `Type` and a friend
/// `workerOf(Name)`, which is defined here.
template <class Name, typename Name::Type worker>
struct Expose {
    friend typename Name::Type workerOf(Name) { return worker; }
};

/// `Name` for the worker of a class; to be used in this namespace.
#define EXPOSE(Name, Class, worker, Signature) \
  struct Name {                                \
    using Type = Signature;                    \
    friend Type workerOf(Name);                \
  };                                           \
  template struct Expose<Name, &Class::worker>

}  // namespace support
