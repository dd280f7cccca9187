// Placeholder until the room has its first source.
