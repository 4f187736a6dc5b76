#pragma once

#include <memory>

#include "foundation/Array.h"
#include "foundation/List.h"

namespace varnet {

// The one way of objects into the collections that own what they point to. Where memory for the place runs
// out, the object goes as well.

/// Puts the object at the end of the array, which owns it from then on.
template <class Object>
Object& AddOwned(XR_CArray<Object*, Object*>& array, std::unique_ptr<Object> object) {
    array.Add(object.get());
    return *object.release();
}

/// Puts the object at the tail of the list, which owns it from then on.
template <class Object>
Object& AddOwned(XR_CList<void*, void*>& list, std::unique_ptr<Object> object) {
    list.AddTail(object.get());
    return *object.release();
}

/// The same with a new object.
template <class Object>
Object& AddNew(XR_CArray<Object*, Object*>& array) {
    return AddOwned(array, std::make_unique<Object>());
}
template <class Object>
Object& AddNew(XR_CList<void*, void*>& list) {
    return AddOwned(list, std::make_unique<Object>());
}

}  // namespace varnet
