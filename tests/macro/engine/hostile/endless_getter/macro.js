return {get textEdits() { for (;;) ; }};
