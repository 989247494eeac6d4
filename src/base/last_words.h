// base/last_words.h - for a thread that ends the process, whatever the others are doing.
// Not here:  what is told before (base/messages.h).
#pragma once

namespace vorel::base {

// What this thread says from now on is printed, though others may be collecting messages, and
// raises the severity of the run.
void leave_message_captures();

}  // namespace vorel::base
