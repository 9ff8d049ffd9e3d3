/* A C host: clsZKString's Filter called through the C interface, with its caret written
 * back, and an error read from its five fields. */
#include <stdio.h>
#include <tsruntime/tsruntime_c.h>
#include <uchar.h>

static void print_text(const char* label, const uint16_t* chars, size_t length) {
  char* text = tsrt_utf16_to_utf8(chars, length, NULL);
  printf("%s%s\n", label, text ? text : "");
  tsrt_free(text);
}

int main(void) {
  tsrt_object* s = NULL;
  tsrt_error* e = NULL;
  if (tsrt_create(u"TSRuntimeLib.clsZKString", 24, &s, &e) != TSRT_OK) return 1;

  /* Filter("a-b-c", "-", SelStart:=4): returns "abc" and moves SelStart to 2. */
  tsrt_argument args[3] = {0};
  tsrt_variant_set_utf8(&args[0].value, "a-b-c", 5, NULL);
  tsrt_variant_set_utf8(&args[1].value, "-", 1, NULL);
  args[2].name = (tsrt_text){u"SelStart", 8};
  tsrt_variant_set_long(&args[2].value, 4);

  tsrt_variant result;
  int status = 1;
  if (tsrt_invoke(s, u"Filter", 6, TSRT_INVOKE_CALL, args, 3, &result, &e) == TSRT_OK) {
    print_text("Filter: ", result.value.string.chars, result.value.string.length);
    printf("SelStart = %d\n", (int)args[2].value.value.long_value);
    tsrt_variant_clear(&result);
    status = 0;
  } else {
    print_text("Error: ", e->description.chars, e->description.length);
    tsrt_error_free(e);
  }
  for (int i = 0; i < 3; ++i) tsrt_variant_clear(&args[i].value);
  tsrt_object_release(s);
  return status;
}
