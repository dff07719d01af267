#pragma once

// Replaces strerror_r in this test program: from now on it has no text for any number.
void failStrerror();
