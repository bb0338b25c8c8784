function check(form) { return form.name.value != ""; }
