"""What tools/diagnose is made of: it reads the logs of installations and says what happened."""
