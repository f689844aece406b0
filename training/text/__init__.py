"""The text networks: rewritten into fast graphs, the recogniser trained on for documents."""
