#pragma once
// A reference to a shared object that behaves as the object variables of the
// system: using it while it is Nothing raises "Object variable not set" (91),
// which the caller's guard catches, instead of crashing.
#include <cstddef>
#include <memory>

#include "VbError.h"

namespace prestkt {

template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}  // NOLINT: Nothing
  Ref(std::shared_ptr<T> p) : p_(std::move(p)) {}  // NOLINT: made by make_shared
  template <class U>
  Ref(const Ref<U>& o) : p_(o.Shared()) {}  // NOLINT

  T* operator->() const {
    if (!p_) Raise(err::ObjectNotSet);
    return p_.get();
  }
  T& operator*() const {
    if (!p_) Raise(err::ObjectNotSet);
    return *p_;
  }
  explicit operator bool() const { return static_cast<bool>(p_); }
  T* get() const { return p_.get(); }
  void reset() { p_.reset(); }
  const std::shared_ptr<T>& Shared() const { return p_; }
  bool operator==(const Ref& o) const { return p_ == o.p_; }
  bool operator==(std::nullptr_t) const { return !p_; }

 private:
  std::shared_ptr<T> p_;
};

}  // namespace prestkt
