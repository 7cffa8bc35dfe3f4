"""The exported functions as the public headers declare them, and what is made of that list."""
