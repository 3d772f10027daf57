// QVR_API marks what libqvr_model.so exports; everything else is hidden.
#pragma once

#define QVR_API __attribute__((visibility("default")))
