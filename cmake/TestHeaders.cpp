// Exists for the precompiled header of dax_test_headers.
