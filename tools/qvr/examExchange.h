// An exam takes the place of another one in steps that can be repeated, so that one that was begun can be finished.
#pragma once

#include <string>

#include "examFolder.h"

namespace qvr::tool {

/// Puts a whole exam into the place of what is in `folder`. Killed at any moment, it leaves the exam that was there, or
/// an exchange that finishExchange can end; nobody reads the exam in between.
/// @param waiting  where the new exam is: a folder in `folder`, gone afterwards
/// @throws Failure with the exam as it was, or, when that cannot be had, with the exchange begun: the sentence says which
void exchangeExam(const ExamFolder& folder, const ExamFolder& waiting);

/// Ends an exchange that was begun; without one, nothing is done. Files of the replaced exam that the new one has no
/// file for stay in its cache. @throws Failure when a step fails; a later call goes on from there
void finishExchange(const ExamFolder& folder);

}  // namespace qvr::tool
