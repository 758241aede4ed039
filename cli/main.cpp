// Placeholder entry, replaced with the console program.
#ifdef _WIN32
int wmain() { return 0; }
#else
int main() { return 0; }
#endif
