// Exists for the precompiled header of dax_archive_headers.
