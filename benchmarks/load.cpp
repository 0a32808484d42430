// This program does nothing. callgrind runs it to count what loading the linked libraries costs.
int main() {}
