"""The zone network: reads one line of OCR-B in a grey strip. Training data is drawn here, from nothing."""
