// planted_order: hangs on the order in which its two sources are initialized.
extern int number_of_other_source;

namespace {

int number = number_of_other_source + 1;

}  // namespace

int main() {
  return number > 0 ? 0 : 1;
}
