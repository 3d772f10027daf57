// dcmObject: the empty base of the record classes and of the examination's entities.
#pragma once

#include "qvr/export.h"

class QVR_API dcmObject {
public:
    dcmObject() = default;
    dcmObject(const dcmObject&) {}
    dcmObject& operator=(const dcmObject&) { return *this; }
    virtual ~dcmObject();
};
