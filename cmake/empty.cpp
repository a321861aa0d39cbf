// Placeholder so that an area without sources still forms a library.
