// Runs through one side of the condition only.
int main(int argc, char**) {
  if (argc > 1) {
    return 1;
  }
  return 0;
}
