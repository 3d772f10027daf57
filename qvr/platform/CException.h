// CException: base of the two error objects that a host can meet when it calls CFile or CDib::ComputeMetrics itself.
#pragma once

#include <exception>

#include "qvr/export.h"

class QVR_API CException : public std::exception {
public:
    ~CException() override;
    const char* what() const noexcept override;
};
