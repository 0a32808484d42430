// Does nothing: what it is linked with is loaded, and valgrind's callgrind counts what that takes.
int main() {}
