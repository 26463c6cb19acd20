"""Pictures of volumes: planes cut by volux.reslice, greys, labels in colour and what is said."""
