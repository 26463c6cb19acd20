"""Volumes beyond one machine's memory: planned, made unit by unit, and proved."""
