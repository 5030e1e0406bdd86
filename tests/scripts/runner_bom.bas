DIM RESULT = "bom ok"
