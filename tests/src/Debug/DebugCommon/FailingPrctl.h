#pragma once

// Replaces prctl in this test program: from now on every call of it fails.
void failPrctl();
