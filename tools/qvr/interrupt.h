// Ctrl-C: a flag that the work looks at between its steps, so that nothing half-made is left behind.
#pragma once

namespace qvr::tool {

/// Turns SIGINT into a flag; a blocked read returns early.
void catchInterrupts();
/// Throws the failure of exit code 130 when Ctrl-C was pressed.
void stopIfInterrupted();

}  // namespace qvr::tool
