// CObject: where its virtual table lives.
#include "qvr/platform/CArchive.h"

CObject::~CObject() = default;
void CObject::AssertValid() const {}
void CObject::Dump() const {}
