/* Names the appliance, and reads its name back from the store. */
#include <stdio.h>
#include <stdlib.h>
#include <twconfig.h>
#include <twobject.h>

int main(int count, char **arguments) {
  if (count != 3) return 2;
  cfg_failure failure;
  cfg *store = cfg_open(arguments[1], 0, &failure);
  if (!store) return fputs(failure.text, stderr), 1;
  int done = cfg_system_set_hostname(store, arguments[2]) && cfg_commit(store, NULL);
  cfg_close(store);

  char *name = NULL;
  store = done ? cfg_open(arguments[1], 0, &failure) : NULL;
  done = store && cfg_system_get_hostname(store, &name) && printf("%s\n", name) > 0;
  free(name);
  cfg_close(store);
  return done ? 0 : 1;
}
