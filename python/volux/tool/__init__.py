"""The command `volux`: volumes in files, resampled with the bits of the package."""
