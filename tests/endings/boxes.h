// Message boxes in a test: their title and text go to standard error, as on Linux, and the first button is pressed.
#pragma once

/// From here on no box of this thread waits for anybody.
void AnswerBoxes();
