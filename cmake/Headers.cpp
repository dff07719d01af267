// Exists for the precompiled header of dax_headers.
