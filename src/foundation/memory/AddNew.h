#pragma once

#include <memory>

#include "foundation/Array.h"
#include "foundation/List.h"

namespace varnet {

// New objects for the collections that own what they point to. Where memory for the place runs out, the
// object goes as well.

/// A new object at the end of the array, which owns it from then on.
template <class Object>
Object& AddNew(XR_CArray<Object*, Object*>& array) {
    auto object = std::make_unique<Object>();
    array.Add(object.get());
    return *object.release();
}

/// A new object at the tail of the list, which owns it from then on.
template <class Object>
Object& AddNew(XR_CList<void*, void*>& list) {
    auto object = std::make_unique<Object>();
    list.AddTail(object.get());
    return *object.release();
}

}  // namespace varnet
